// What focusing asks of the machine, so that every way to focus can be tested without one.
//
// A terminal device has a name, such as ttys003, and a path, such as /dev/ttys003.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Integrations/ProcessRunner.h"
#include "Terminal/TerminalHost.h"

namespace tallowbrook::host {

struct FocusOperations {
    // Runs a program for 5 s at most; absent when it cannot be run or does not end.
    std::function<std::optional<ProcessRunner::Result>(const std::string& path,
                                                       const std::vector<std::string>& arguments)>
        run;
    // Where on PATH a program of this name lies; absent when there is none.
    std::function<std::optional<std::string>(std::string_view name)> findProgram;
    // `TerminalHost::hostChain` and `TerminalHost::processesOnTTY`.
    std::function<std::vector<TerminalHost::Process>(const std::string& deviceName)> hostChain;
    std::function<std::vector<TerminalHost::ProcessPair>(const std::string& deviceName)>
        processesOnDevice;
    std::function<std::optional<std::string>(pid_t pid)> directoryOf;  // `directoryOfProcess`
    // Whether this request, of `EditorBridge::requestTerminal`, is taken within a second.
    std::function<bool(const std::filesystem::path& request)> requestIsTaken;

    static FocusOperations live();
};

}  // namespace tallowbrook::host
