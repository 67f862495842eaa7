#include "Focus.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <thread>

#include "EventBridge/DirectoryListing.h"

namespace tallowbrook::host {
namespace {

constexpr Seconds programTimeout{5};
constexpr std::int64_t maxOutputBytes = 1 << 20;

std::optional<std::string> findOnPath(std::string_view name) {
    const char* variable = std::getenv("PATH");
    std::string_view rest = variable == nullptr ? std::string_view{} : variable;
    while (!rest.empty()) {
        const auto directory = rest.substr(0, rest.find(':'));
        rest.remove_prefix(std::min(directory.size() + 1, rest.size()));
        if (!directory.starts_with('/')) continue;
        auto path = std::string{directory} + "/" + std::string{name};
        if (access(path.c_str(), X_OK) == 0) return path;
    }
    return std::nullopt;
}

bool holdsRequest(const std::filesystem::path& directory) {
    return std::ranges::any_of(listDirectory(directory), [](const std::filesystem::path& file) {
        return file.extension() == ".json";
    });
}

bool waitUntilTaken(const std::filesystem::path& directory) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds{1};
    while (holdsRequest(directory)) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds{20});
    }
    return true;
}

std::optional<std::string> directoryByProc(pid_t pid) {
    std::error_code error;
    const auto directory =
        std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/cwd", error);
    if (error) return std::nullopt;
    return directory.string();
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
        .findProgram = findOnPath,
        .hostChain = [](const std::string& tty) { return TerminalHost::hostChain(tty); },
        .processesOnTTY = [](const std::string& tty) { return TerminalHost::processesOnTTY(tty); },
        .directoryOf = directoryByProc,
        .requestsAreTaken = waitUntilTaken,
    };
}

}  // namespace tallowbrook::host
