// A machine of a test's own: programs that answer as they are told, and remember that they were
// run.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "Focus/FocusOperations.h"
#include "Support/FileContents.h"

namespace tallowbrook::host {

// The lines with which tmux is asked.
inline const std::string tmuxPanes =
    "/bin/tmux -u list-panes -a -F #{pane_id} #{session_id} #{pane_tty} #{pane_current_path}";
inline const std::string tmuxClients = "/bin/tmux -u list-clients -F #{session_id} #{client_tty}";
inline std::string tmuxSelection(const std::string& pane) {
    return "/bin/tmux -u select-window -t " + pane + " ; select-pane -t " + pane;
}

struct FakeMachine {
    // What a program prints for a command line, joined by blanks; a missing one fails.
    std::map<std::string, std::string> answers;
    std::vector<std::string> programs;  // on PATH, below /bin
    // By the names of terminal devices.
    std::map<std::string, std::vector<TerminalHost::Process>> chains;
    std::map<std::string, std::vector<TerminalHost::ProcessPair>> processes;
    std::map<pid_t, std::string> directories;
    bool takesRequests = true;
    std::vector<std::string> takenRequests;  // what stood in them
    std::vector<std::string> ran;

    FocusOperations operations() {
        return {
            .run = [this](const std::string& path, const std::vector<std::string>& arguments)
                -> std::optional<ProcessRunner::Result> {
                std::string line = path;
                for (const auto& argument : arguments) line += " " + argument;
                ran.push_back(line);
                const auto answer = answers.find(line);
                if (answer == answers.end()) return std::nullopt;
                return ProcessRunner::Result{0, answer->second};
            },
            .findProgram = [this](std::string_view name) -> std::optional<std::string> {
                for (const auto& program : programs)
                    if (program == name) return "/bin/" + program;
                return std::nullopt;
            },
            .hostChain = [this](const std::string& deviceName) { return chains[deviceName]; },
            .processesOnDevice =
                [this](const std::string& deviceName) { return processes[deviceName]; },
            .directoryOf = [this](pid_t pid) -> std::optional<std::string> {
                const auto found = directories.find(pid);
                if (found == directories.end()) return std::nullopt;
                return found->second;
            },
            .requestIsTaken =
                [this](const std::filesystem::path& request) {
                    if (!takesRequests) return false;
                    takenRequests.push_back(contentsOf(request));
                    return std::filesystem::remove(request);
                },
        };
    }
};

}  // namespace tallowbrook::host
