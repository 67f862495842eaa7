// Brings the window in which a session runs to the front.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "EventBridge/TallowbrookPaths.h"
#include "Integrations/ProcessRunner.h"
#include "SessionState/SessionSnapshot.h"
#include "Terminal/TerminalHost.h"

namespace tallowbrook::host {

struct FocusOutcome {
    enum class Result {
        focused,
        instead,  // something that helps, such as the application without the right tab
        nothing,
    };
    Result result = Result::nothing;
    std::string sentence;  // for the user: what was done, or why not
    bool operator==(const FocusOutcome&) const = default;

    static FocusOutcome focused(std::string sentence);
    static FocusOutcome instead(std::string sentence);
    static FocusOutcome nothing(std::string sentence);
};

// What focusing asks of the machine.
struct FocusOperations {
    // Runs a program for a few seconds at most; absent when it cannot be run or does not end.
    std::function<std::optional<ProcessRunner::Result>(const std::string& path,
                                                       const std::vector<std::string>& arguments)>
        run;
    // Where on PATH a program of this name lies.
    std::function<std::optional<std::string>(std::string_view name)> findProgram;
    std::function<std::vector<TerminalHost::Process>(const std::string& tty)> hostChain;
    std::function<std::vector<TerminalHost::ProcessPair>(const std::string& tty)> processesOnTTY;
    std::function<std::optional<std::string>(pid_t pid)> directoryOf;  // `directoryOfProcess`
    // Waits a moment until somebody has taken this request, of `EditorBridge::requestTerminal`.
    std::function<bool(const std::filesystem::path& request)> requestIsTaken;

    static FocusOperations live();
};

// The working directory of a process, where the system tells it to other processes. One
// implementation per system.
std::optional<std::string> directoryOfProcess(pid_t pid);

// One implementation per system: by the session's terminal on macOS, by its working directory on
// Linux, where an agent's terminal has no name that lasts.
FocusOutcome focusSession(const SessionSnapshot& session, const TallowbrookPaths& paths,
                          const FocusOperations& operations = FocusOperations::live());

}  // namespace tallowbrook::host
