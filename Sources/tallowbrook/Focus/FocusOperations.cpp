#include "Focus/FocusOperations.h"

#include <unistd.h>

#include <chrono>
#include <thread>

#include "Focus/BoundedRun.h"
#include "Focus/ProcessDirectory.h"
#include "System/SearchPath.h"

namespace tallowbrook::host {
namespace {

// Longer than the 3 s after which the scripts for terminal applications give up by themselves.
constexpr Seconds programTimeout{5};
// Far more than tmux prints about hundreds of panes.
constexpr std::int64_t maxOutputBytes = 1 << 20;

// An extension takes a request by removing its file, and says nothing more.
bool waitUntilTaken(const std::filesystem::path& request) {
    constexpr std::chrono::seconds patience{1};
    constexpr std::chrono::milliseconds pollInterval{20};
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (access(request.c_str(), F_OK) == 0) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(pollInterval);
    }
    return true;
}

}  // namespace

FocusOperations FocusOperations::live() {
    return {
        .run =
            [](const std::string& path, const std::vector<std::string>& arguments) {
                return runBounded(path, arguments, programTimeout, maxOutputBytes);
            },
        .findProgram = SearchPath::find,
        .hostChain =
            [](const std::string& deviceName) { return TerminalHost::hostChain(deviceName); },
        .processesOnDevice =
            [](const std::string& deviceName) { return TerminalHost::processesOnTTY(deviceName); },
        .directoryOf = directoryOfProcess,
        .requestIsTaken = waitUntilTaken,
    };
}

}  // namespace tallowbrook::host
