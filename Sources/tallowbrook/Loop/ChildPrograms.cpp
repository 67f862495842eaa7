#include "Loop/ChildPrograms.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include "System/ProcessLaunch.h"

namespace tallowbrook::host {
namespace {

using std::chrono::steady_clock;

constexpr std::size_t keptOutput = 4096;
// Between the end of a program's output and its exit there are microseconds, mostly.
constexpr std::chrono::milliseconds exitLook{20};

// For a shell, since a started program has no standard error else. It takes the words as they are,
// and becomes the program.
std::vector<std::string> joiningErrors(const std::string& executablePath,
                                       const std::vector<std::string>& arguments) {
    std::vector<std::string> words{"-c", "exec \"$@\" 2>&1", "sh", executablePath};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

}  // namespace

std::expected<void, int> ChildPrograms::run(const std::string& executablePath,
                                            const std::vector<std::string>& arguments,
                                            std::chrono::milliseconds limit, Ended ended,
                                            Kept kept) {
    auto pipe = ProcessLaunch::makePipe();
    if (!pipe) return std::unexpected(errno);
    const auto process =
        kept == Kept::output
            ? ProcessLaunch::start(executablePath, arguments, pipe->writer)
            : ProcessLaunch::start("/bin/sh", joiningErrors(executablePath, arguments),
                                   pipe->writer);
    if (!process) return std::unexpected(process.error());
    const auto [place, isNew] = children_.try_emplace(*process);
    auto& child = place->second;
    child.process = *process;
    child.output = std::move(pipe->reader);
    child.killedAt = steady_clock::now() + limit;
    child.ended = std::move(ended);
    child.attachment = loop_.attach({
        .interest = [&child] { return interest(child); },
        .proceed = [this, number = *process](short) { proceed(number); },
    });
    return {};
}

PollInterest ChildPrograms::interest(const Child& child) {
    if (!child.output.isOpen()) return {-1, 0, std::min(child.nextLook, child.killedAt)};
    return {child.output.number(), POLLIN, child.killedAt};
}

void ChildPrograms::proceed(pid_t process) {
    auto& child = children_.at(process);
    const auto now = steady_clock::now();
    if (now >= child.killedAt && !std::exchange(child.wasKilled, true)) {
        kill(process, SIGKILL);
        // What it has started may keep the output open.
        child.output = FileDescriptor{};
        child.killedAt = MonotonicTime::max();
    }
    if (child.output.isOpen()) {
        std::array<char, keptOutput> buffer{};
        pollfd reader{child.output.number(), POLLIN, 0};
        if (poll(&reader, 1, 0) < 1) return;
        const ssize_t count = read(child.output.number(), buffer.data(), buffer.size());
        if (count > 0)
            child.text.append(buffer.data(), std::min(static_cast<std::size_t>(count),
                                                      keptOutput - child.text.size()));
        if (count > 0 || (count < 0 && errno == EINTR)) return;
        child.output = FileDescriptor{};
    }
    int status = 0;
    const pid_t reaped = waitpid(process, &status, WNOHANG);
    if (reaped == 0 || (reaped < 0 && errno == EINTR)) {
        child.nextLook = now + exitLook;
        return;
    }
    // Out of the map first: who hears of the end may start another one.
    const auto ended = children_.extract(process);
    ended.mapped().ended(WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status),
                         ended.mapped().text);
}

}  // namespace tallowbrook::host
