#include "Channels/ProgramRuns.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <utility>

#include "System/ProcessLaunch.h"
#include "Text/UTF8.h"

namespace tallowbrook::host {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds graceAfterTermination{1};
// Where the system does not tell of a child's exit.
constexpr std::chrono::milliseconds lookForExits{50};

// What is in the pipe now: a program that it has left behind may hold the other end for long.
std::string outputIn(const FileDescriptor& pipe) {
    if (!pipe.isOpen()) return {};
    std::string text;
    std::array<char, 65536> buffer;
    const ssize_t count = read(pipe.number(), buffer.data(), buffer.size());
    if (count > 0) text.assign(buffer.data(), static_cast<std::size_t>(count));
    return UTF8::replacingInvalid(text);
}

}  // namespace

ProgramRuns::~ProgramRuns() {
    for (const auto& [number, run] : runs_) kill(-run.pid, SIGTERM);
}

std::expected<void, FileError> ProgramRuns::start(std::int64_t number,
                                                  const ProgramRequest& request) {
    FileDescriptor input;
    if (!request.input.empty()) {
        auto made = ProcessLaunch::makeInput(request.input);
        if (!made) return std::unexpected(made.error());
        input = std::move(*made);
    }
    std::optional<ProcessLaunch::Pipe> output;
    if (request.keepsOutput) {
        output = ProcessLaunch::makePipe();
        if (!output || fcntl(output->reader.number(), F_SETFL, O_NONBLOCK) != 0)
            return std::unexpected(FileError{"pipe", errno});
    }
    const FileDescriptor none;
    const auto child =
        ProcessLaunch::start(request.path, request.arguments, output ? output->writer : none, input,
                             ProcessLaunch::ProcessGroup::ofItsOwn);
    if (!child) return std::unexpected(FileError{"posix_spawn", child.error()});

    Run run;
    run.pid = *child;
    if (output) run.output = std::move(output->reader);
    if (request.timeout) run.deadline = steady_clock::now() + *request.timeout;
    run.isWatched = watch_.add(*child);
    runs_.insert_or_assign(number, std::move(run));
    return {};
}

void ProgramRuns::end(std::int64_t number) {
    const auto found = runs_.find(number);
    if (found != runs_.end() && found->second.stage == Stage::runs) hasten(found->second);
}

std::vector<ProgramEnd> ProgramRuns::takeEnded() { return std::exchange(ended_, {}); }

PollInterest ProgramRuns::interest() const {
    PollInterest interest;
    const auto wakeBy = [&](MonotonicTime time) {
        interest.deadline = std::min(time, interest.deadline.value_or(time));
    };
    for (const auto& [number, run] : runs_) {
        if (run.isWatched) {
            interest.descriptor = watch_.descriptor();
            interest.events = POLLIN;
        } else {
            wakeBy(steady_clock::now() + lookForExits);
        }
        if (run.deadline) wakeBy(*run.deadline);
    }
    return interest;
}

void ProgramRuns::proceed() {
    watch_.consume();
    std::erase_if(runs_,
                  [this](const auto& numbered) { return reap(numbered.first, numbered.second); });
    const auto now = steady_clock::now();
    for (auto& [number, run] : runs_)
        if (run.deadline && *run.deadline <= now) hasten(run);
}

// False while it runs.
bool ProgramRuns::reap(std::int64_t number, const Run& run) {
    siginfo_t info{};
    // Left to be reaped, so that its group is no other's yet.
    if (waitid(P_PID, static_cast<id_t>(run.pid), &info, WEXITED | WNOHANG | WNOWAIT) != 0 ||
        info.si_pid != run.pid)
        return false;
    if (run.stage != Stage::runs) kill(-run.pid, SIGKILL);
    int status = 0;
    if (waitpid(run.pid, &status, WNOHANG) != run.pid) return false;
    const bool hasExited = WIFEXITED(status);
    ended_.push_back({.number = number,
                      .way = run.stage != Stage::runs ? ProgramEnd::Way::timedOut
                             : hasExited              ? ProgramEnd::Way::exited
                                                      : ProgramEnd::Way::signalled,
                      .status = hasExited ? WEXITSTATUS(status) : WTERMSIG(status),
                      .output = outputIn(run.output)});
    return true;
}

void ProgramRuns::hasten(Run& run) {
    if (run.stage == Stage::runs) {
        kill(-run.pid, SIGTERM);
        run.stage = Stage::askedToEnd;
        run.deadline = steady_clock::now() + graceAfterTermination;
        return;
    }
    // Also what was stopped ends by this; nothing more can be done to it.
    kill(-run.pid, SIGKILL);
    run.stage = Stage::killed;
    run.deadline.reset();
}

}  // namespace tallowbrook::host
