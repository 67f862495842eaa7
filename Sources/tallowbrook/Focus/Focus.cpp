#include "Focus/Focus.h"

#include <unistd.h>

#include <chrono>
#include <thread>

#include "System/SearchPath.h"

namespace tallowbrook::host {
namespace {

constexpr Seconds programTimeout{5};
constexpr std::int64_t maxOutputBytes = 1 << 20;

bool waitUntilTaken(const std::filesystem::path& request) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds{1};
    while (access(request.c_str(), F_OK) == 0) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds{20});
    }
    return true;
}

}  // namespace

FocusOutcome FocusOutcome::focused(std::string sentence) {
    return {Result::focused, std::move(sentence)};
}

FocusOutcome FocusOutcome::instead(std::string sentence) {
    return {Result::instead, std::move(sentence)};
}

FocusOutcome FocusOutcome::nothing(std::string sentence) {
    return {Result::nothing, std::move(sentence)};
}

FocusOperations FocusOperations::live() {
    return {
        .run =
            [](const std::string& path, const std::vector<std::string>& arguments) {
                return ProcessRunner::run(path, arguments, programTimeout, maxOutputBytes);
            },
        .findProgram = SearchPath::find,
        .hostChain = [](const std::string& tty) { return TerminalHost::hostChain(tty); },
        .processesOnTTY = [](const std::string& tty) { return TerminalHost::processesOnTTY(tty); },
        .directoryOf = directoryOfProcess,
        .requestIsTaken = waitUntilTaken,
    };
}

}  // namespace tallowbrook::host
