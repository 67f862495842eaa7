#include "HelperTrial.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <thread>
#include <vector>

#include "EventBridge/FileDescriptor.h"
#include "HostLock.h"
#include "HostSettings.h"
#include "Ingest.h"
#include "Integrations/IntegrationSetup.h"

extern char** environ;

namespace tallowbrook::host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds patience{5};
constexpr std::chrono::milliseconds pollInterval{10};

std::string systemFailure(std::string_view what, int error) {
    return fmt::format("{}: {}.", what, FileError{"", error}.reason());
}

// A pipe that holds the payload and has no writer any more. The payload is far smaller than what
// every pipe holds, so writing does not wait.
std::expected<FileDescriptor, int> pipeWith(std::string_view payload) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return std::unexpected(errno);
    FileDescriptor reader{ends[0]};
    const FileDescriptor writer{ends[1]};
    fcntl(reader.number(), F_SETFD, FD_CLOEXEC);
    fcntl(writer.number(), F_SETFD, FD_CLOEXEC);
    if (write(writer.number(), payload.data(), payload.size()) !=
        static_cast<ssize_t>(payload.size()))
        return std::unexpected(errno);
    return reader;
}

std::expected<pid_t, int> spawn(const std::filesystem::path& program,
                                std::vector<std::string> arguments, int input) {
    std::vector<char*> words;
    std::string name = program.string();
    words.push_back(name.data());
    for (auto& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    for (const int output : {STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&actions, output, "/dev/null", O_WRONLY, 0);
    pid_t child = -1;
    const int error = posix_spawn(&child, name.c_str(), &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) return std::unexpected(error);
    return child;
}

// False when it had to be killed.
bool waitForEnd(pid_t child) {
    const auto deadline = Clock::now() + patience;
    while (waitpid(child, nullptr, WNOHANG) == 0) {
        if (Clock::now() >= deadline) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
            return false;
        }
        std::this_thread::sleep_for(pollInterval);
    }
    return true;
}

std::expected<void, std::string> runHelper(const TallowbrookPaths& paths,
                                           std::vector<std::string> arguments,
                                           std::string_view payload) {
    const auto input = pipeWith(payload);
    if (!input)
        return std::unexpected(systemFailure("The test event has no way out", input.error()));
    const auto child = spawn(paths.installedHelper(), std::move(arguments), input->number());
    if (!child) return std::unexpected(systemFailure("The helper cannot be run", child.error()));
    if (waitForEnd(*child)) return {};
    return std::unexpected("The helper does not end.");
}

void drainUnlessWatched(const TallowbrookPaths& paths, EventStore& store) {
    const auto lock = HostLock::tryAcquire(paths);
    if (!lock || !*lock) return;
    const auto preferences = store.preferences().value_or(defaultPreferences());
    Ingest{{paths}, preferences, Calendar::current()}.run(store, currentInstant());
}

bool comesBack(const TallowbrookPaths& paths, const SessionKey& key, EventStore& store) {
    const auto deadline = Clock::now() + patience;
    while (true) {
        drainUnlessWatched(paths, store);
        if (store.session(key)) return true;
        if (Clock::now() >= deadline) return false;
        std::this_thread::sleep_for(pollInterval);
    }
}

}  // namespace

std::expected<void, std::string> tryHelper(const TallowbrookPaths& paths, Provider provider,
                                           EventStore& store) {
    const auto id = randomUUID();
    if (!id) return std::unexpected("No test event can be made: " + id.error().reason() + ".");
    const SessionKey key{provider, std::string{setupCheckPrefix} + UUIDText::text(*id)};
    auto arguments = IntegrationSetup::testEventArguments(provider);
    // Where it can be left out, the helper must find the home by itself, as it will in a hook.
    if (paths != TallowbrookPaths::standard()) {
        arguments.emplace_back("--home");
        arguments.push_back(paths.home.string());
    }
    const auto payload = IntegrationSetup::testEventPayload(provider, key.sessionID, "/");
    if (auto ran = runHelper(paths, std::move(arguments), payload); !ran) return ran;
    if (!comesBack(paths, key, store))
        return std::unexpected(
            fmt::format("The helper ran, but its test event did not arrive. {} may say why.",
                        paths.helperLogFile().string()));
    store.removeSession(key);
    return {};
}

}  // namespace tallowbrook::host
