#include "Integrations/ProcessRunner.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "System/ProcessLaunch.h"
#include "Text/UTF8.h"

namespace tallowbrook {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds graceAfterTermination{1};

// What the caller shares with the task that reads, which may outlive the call.
struct OutputBox {
    std::mutex lock;
    std::string data;
    bool isComplete = false;
    std::condition_variable completed;

    // Reads to the end, keeps the front. Closes the pipe before it says so.
    void fill(FileDescriptor pipe, std::size_t maxBytes) {
        std::string front;
        std::array<char, 65536> buffer;
        while (true) {
            const ssize_t count = read(pipe.number(), buffer.data(), buffer.size());
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) break;
            front.append(buffer.data(),
                         std::min(static_cast<std::size_t>(count), maxBytes - front.size()));
        }
        pipe = FileDescriptor{};  // a caller that counts its open files must not find this one
        {
            const std::lock_guard guard{lock};
            data = std::move(front);
            isComplete = true;
        }
        completed.notify_all();
    }

    bool waitUntil(Clock::time_point deadline) {
        std::unique_lock guard{lock};
        return completed.wait_until(guard, deadline, [this] { return isComplete; });
    }
};

// What the caller shares with the task that starts the child and reaps it.
class Child {
 public:
    // `output` is closed here as soon as the child has it: only then can the reader meet its end.
    void startAndReap(const std::string& executablePath, const std::vector<std::string>& arguments,
                      FileDescriptor output) {
        const auto pid = ProcessLaunch::start(executablePath, arguments, output);
        output = FileDescriptor{};
        if (pid) {
            note(*pid);
            // Waits without reaping, and without the lock, which `terminate` needs meanwhile.
            ProcessLaunch::awaitExit(*pid);
            while (!reapIfExited()) std::this_thread::sleep_for(pause);
        }
        {
            const std::lock_guard guard{lock_};
            isOver_ = true;
        }
        over_.notify_all();
    }

    // Asks the child to end; one that is still to be started, as soon as it is.
    void terminate() {
        const std::lock_guard guard{lock_};
        mustEnd_ = true;
        if (pid_) kill(*pid_, SIGTERM);
    }

    // Absent when there was no child, or when its status is lost.
    std::optional<std::int32_t> waitForExit() {
        std::unique_lock guard{lock_};
        over_.wait(guard, [this] { return isOver_; });
        return status_;
    }

 private:
    static constexpr std::chrono::milliseconds pause{5};

    void note(pid_t pid) {
        const std::lock_guard guard{lock_};
        pid_ = pid;
        if (mustEnd_) kill(pid, SIGTERM);
    }

    // Under the lock, so that no signal goes to a number that the system has given away.
    bool reapIfExited() {
        const std::lock_guard guard{lock_};
        int status = 0;
        const pid_t reaped = waitpid(*pid_, &status, WNOHANG);
        if (reaped == 0 || (reaped < 0 && errno == EINTR)) return false;
        if (reaped > 0) status_ = WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
        pid_.reset();
        return true;
    }

    std::mutex lock_;
    std::condition_variable over_;
    std::optional<pid_t> pid_;  // from the start until it is reaped
    bool mustEnd_ = false;
    bool isOver_ = false;
    std::optional<std::int32_t> status_;
};

// Threads started meanwhile get no signals: those are for the threads of the caller to handle.
class SignalsBlocked {
 public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &former_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
    sigset_t former_{};
};

template <typename Task>
void inBackground(Task task) {
    const SignalsBlocked blocked;
    std::thread{std::move(task)}.detach();
}

bool isOneWord(const std::string& text) { return text.find('\0') == std::string::npos; }

// A time that the clock can hold, whatever number was given.
Clock::time_point deadlineAfter(Seconds timeout) {
    constexpr Seconds longest{1e9};
    const Seconds bounded = timeout > Seconds{0} ? std::min(timeout, longest) : Seconds{0};
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(bounded);
}

}  // namespace

std::optional<ProcessRunner::Result> ProcessRunner::run(const std::string& executablePath,
                                                        const std::vector<std::string>& arguments,
                                                        Seconds timeout,
                                                        std::int64_t maxOutputBytes) {
    // The system would take a word to end at its first zero byte, and run something else.
    if (!isOneWord(executablePath) || !std::ranges::all_of(arguments, isOneWord))
        return std::nullopt;
    auto pipe = ProcessLaunch::makePipe();
    if (!pipe) return std::nullopt;

    const auto box = std::make_shared<OutputBox>();
    const auto child = std::make_shared<Child>();
    const auto maxBytes = static_cast<std::size_t>(std::max<std::int64_t>(maxOutputBytes, 0));
    const auto deadline = deadlineAfter(timeout);
    try {
        inBackground([box, maxBytes, reader = std::move(pipe->reader)]() mutable {
            box->fill(std::move(reader), maxBytes);
        });
        // The child is started there too, since even that can hang, on a file system that does not
        // answer.
        inBackground(
            [child, executablePath, arguments, writer = std::move(pipe->writer)]() mutable {
                child->startAndReap(executablePath, arguments, std::move(writer));
            });
    } catch (const std::system_error&) {  // no thread to be had
        return std::nullopt;
    }

    if (!box->waitUntil(deadline)) {
        child->terminate();
        box->waitUntil(Clock::now() + graceAfterTermination);
        return std::nullopt;
    }
    // The output has ended, so the program is about to exit; its status needs that.
    const auto status = child->waitForExit();
    if (!status) return std::nullopt;
    const std::lock_guard guard{box->lock};
    return Result{*status, UTF8::replacingInvalid(box->data)};
}

}  // namespace tallowbrook
