// A user of one test with the two agents' directories, for the commands that set agents up.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "Support/FileContents.h"
#include "Support/PseudoTerminal.h"
#include "TestHome.h"

namespace tallowbrook {

struct SetupHome : TestHome {
    SetupHome() {
        // No agent that the machine itself has.
        environment["PATH"] = "/usr/bin:/bin";
        environment["CLAUDE_CONFIG_DIR"] = std::nullopt;
        environment["CODEX_HOME"] = std::nullopt;
        environment["NO_COLOR"] = std::nullopt;
    }

    std::filesystem::path user = directory.path / "user";
    std::filesystem::path claudeFile = user / ".claude" / "settings.json";
    std::filesystem::path codexFile = user / ".codex" / "hooks.json";

    // Runs the host with its standard input on a terminal, on which each answer is typed when the
    // next question comes.
    ProgramResult hostWithAnswers(std::vector<std::string> arguments,
                                  const std::vector<std::string>& answers) const {
        const PseudoTerminal terminal;
        ProgramCall call = hostCall(std::move(arguments));
        call.prepare = [&] {
            const int file = open(terminal.path.c_str(), O_RDWR);
            dup2(file, STDIN_FILENO);
        };
        RunningProgram host{call};
        std::string seen;
        for (const auto& answer : answers) {
            while (host.output().substr(seen.size()).find("[y/N] ") == std::string::npos)
                if (!host.waitForMoreOutput()) return host.wait();
            seen = host.output();
            EXPECT_TRUE(terminal.type(answer + "\n"));
        }
        return host.wait();
    }

    // Every file below the test's directory with its contents.
    std::map<std::string, std::string> tree() const {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator{directory.path})
            files[entry.path()] = entry.is_regular_file() ? contentsOf(entry.path()) : "";
        return files;
    }

    std::vector<std::filesystem::path> backups() const {
        std::vector<std::filesystem::path> files;
        if (!std::filesystem::exists(paths.backupsDirectory())) return files;
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator{paths.backupsDirectory()})
            if (entry.is_regular_file()) files.push_back(entry.path());
        return files;
    }
};

inline bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace tallowbrook
