#include "Focus/BoundedRun.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <future>
#include <memory>
#include <system_error>
#include <thread>

#include "System/ProcessLaunch.h"
#include "Text/UTF8.h"

namespace tallowbrook::host {
namespace {

using Clock = std::chrono::steady_clock;
using Result = std::optional<ProcessRunner::Result>;

constexpr std::chrono::seconds graceAfterTermination{1};
constexpr std::chrono::milliseconds pause{5};

struct Program {
    std::string path;
    std::vector<std::string> arguments;
    std::size_t maxOutputBytes;
};

// Absent when the output was not closed in time. Reads all of it and keeps the front.
std::optional<std::string> readOutput(const FileDescriptor& pipe, std::size_t maxBytes,
                                      Clock::time_point deadline) {
    std::string front;
    std::array<char, 65536> buffer;
    while (true) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) return std::nullopt;
        pollfd reader{pipe.number(), POLLIN, 0};
        if (poll(&reader, 1, static_cast<int>(left)) <= 0) continue;
        const ssize_t count = read(pipe.number(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return front;
        front.append(buffer.data(),
                     std::min(static_cast<std::size_t>(count), maxBytes - front.size()));
    }
}

// The exit code or the signal's number; absent when the child has not exited in time.
std::optional<std::int32_t> awaitExit(pid_t child, Clock::time_point deadline) {
    while (true) {
        int status = 0;
        const pid_t reaped = waitpid(child, &status, WNOHANG);
        if (reaped == child) return WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
        if (Clock::now() >= deadline) return std::nullopt;
        std::this_thread::sleep_for(pause);
    }
}

void end(pid_t child) {
    kill(child, SIGTERM);
    if (awaitExit(child, Clock::now() + graceAfterTermination)) return;
    kill(child, SIGKILL);
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) continue;
}

Result runToTheEnd(const Program& program, Clock::time_point deadline) {
    auto pipe = ProcessLaunch::makePipe();
    if (!pipe) return std::nullopt;
    const auto child = ProcessLaunch::start(program.path, program.arguments, pipe->writer);
    if (!child) return std::nullopt;
    pipe->writer = FileDescriptor{};
    const auto output = readOutput(pipe->reader, program.maxOutputBytes, deadline);
    const auto status = output ? awaitExit(*child, deadline) : std::nullopt;
    if (status) return ProcessRunner::Result{*status, UTF8::replacingInvalid(*output)};
    end(*child);
    return std::nullopt;
}

bool isOneWord(const std::string& text) { return text.find('\0') == std::string::npos; }

}  // namespace

std::optional<ProcessRunner::Result> runBounded(const std::string& executablePath,
                                                const std::vector<std::string>& arguments,
                                                Seconds timeout, std::int64_t maxOutputBytes) {
    // The system would take a word to end at its first zero byte, and run something else.
    if (!isOneWord(executablePath) || !std::ranges::all_of(arguments, isOneWord))
        return std::nullopt;
    const auto deadline = Clock::now() + std::chrono::ceil<Clock::duration>(timeout);
    Program program{executablePath, arguments,
                    static_cast<std::size_t>(std::max<std::int64_t>(maxOutputBytes, 0))};
    try {
        // On a thread, since even the start can hang, on a file system that does not answer.
        std::packaged_task<Result()> task{
            [program = std::move(program), deadline] { return runToTheEnd(program, deadline); }};
        auto result = task.get_future();
        std::thread{std::move(task)}.detach();
        if (result.wait_until(deadline + 2 * graceAfterTermination) != std::future_status::ready)
            return std::nullopt;
        return result.get();
    } catch (const std::system_error&) {  // no thread to be had
        return std::nullopt;
    }
}

}  // namespace tallowbrook::host
