#include "Setup/HelperTrial.h"

#include <fmt/core.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <optional>
#include <thread>
#include <vector>

#include "Integrations/IntegrationSetup.h"
#include "Setup/ReportingHome.h"
#include "Store/SessionStore.h"
#include "System/ProcessLaunch.h"
#include "Watch/SpoolIntake.h"

namespace tallowbrook::host {
namespace {

using Clock = std::chrono::steady_clock;

// The helper's own watchdog ends it after 3 s.
constexpr std::chrono::seconds patience{5};
constexpr std::chrono::milliseconds pollInterval{10};

// What is read from a pipe that holds the payload and has no writer any more. The payload is far
// smaller than what every pipe holds, so writing does not wait. Absent when the system refuses.
std::optional<FileDescriptor> readerOf(std::string_view payload) {
    auto pipe = ProcessLaunch::makePipe();
    if (!pipe || write(pipe->writer.number(), payload.data(), payload.size()) !=
                     static_cast<ssize_t>(payload.size()))
        return std::nullopt;
    return std::move(pipe->reader);
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

std::expected<void, Sentence> runHelper(const TallowbrookPaths& paths,
                                        const std::vector<std::string>& arguments,
                                        std::string_view payload) {
    const auto input = readerOf(payload);
    if (!input) return std::unexpected(Sentence{"No pipe can be made for the test event."});
    const auto child =
        ProcessLaunch::start(paths.installedHelper().string(), arguments, FileDescriptor{}, *input);
    if (!child)
        return std::unexpected(
            Sentence{"The helper cannot be run: " + FileError{"spawn", child.error()}.reason()});
    if (waitForEnd(*child)) return {};
    return std::unexpected(Sentence{"The helper does not end."});
}

bool comesBack(const TallowbrookPaths& paths, const SessionKey& key, Database& database) {
    const auto deadline = Clock::now() + patience;
    while (true) {
        takeInUnlessWatched(paths, database);
        // Only the database tells, since another host may have stored the event.
        if (SessionStore{database}.session(key)) return true;
        if (Clock::now() >= deadline) return false;
        std::this_thread::sleep_for(pollInterval);
    }
}

}  // namespace

std::expected<void, Sentence> tryHelper(const TallowbrookPaths& paths, Provider provider,
                                        Database& database) {
    const auto id = randomUUID();
    if (!id) return std::unexpected(Sentence{"No test event can be made: " + id.error().reason()});
    const SessionKey key{provider, std::string{setupCheckPrefix} + UUIDText::text(*id)};
    auto arguments = IntegrationSetup::testEventArguments(provider);
    // Where it can be left out, the helper must find the home by itself, as it will in a hook.
    if (!agentsReportTo(paths)) {
        arguments.emplace_back("--home");
        arguments.push_back(paths.home.string());
    }
    // A directory that every machine has.
    const auto payload = IntegrationSetup::testEventPayload(provider, key.sessionID, "/");
    if (auto ran = runHelper(paths, arguments, payload); !ran) return ran;
    if (!comesBack(paths, key, database))
        return std::unexpected(Sentence{
            fmt::format("The helper ran, but its test event did not arrive. {} may say why.",
                        paths.helperLogFile().string())});
    auto transaction = database.beginWriting();
    SessionStore{database}.removeSession(key);
    transaction.commit();
    return {};
}

}  // namespace tallowbrook::host
