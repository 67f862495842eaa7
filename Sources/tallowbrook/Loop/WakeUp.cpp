#include "Loop/WakeUp.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace tallowbrook::host {
namespace {

// The writing end of a pipe: a signal handler may do little more than write(2).
volatile std::sig_atomic_t endRequestPipe = -1;

extern "C" void requestEnd(int) {
    const int savedError = errno;
    [[maybe_unused]] const ssize_t written = write(endRequestPipe, "x", 1);
    errno = savedError;
}

bool endOn(int signal) {
    struct sigaction action{};
    if (sigaction(signal, nullptr, &action) != 0) return false;
    if (action.sa_handler == SIG_IGN) return true;
    action = {};
    action.sa_handler = requestEnd;
    return sigaction(signal, &action, nullptr) == 0;
}

bool prepareEnd(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) == 0 &&
           fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0;
}

}  // namespace

std::expected<WakeUp, FileError> WakeUp::start() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return std::unexpected(FileError{"pipe", errno});
    WakeUp wakeUp;
    wakeUp.endRequests_ = FileDescriptor{ends[0]};
    if (!prepareEnd(ends[0]) || !prepareEnd(ends[1]))
        return std::unexpected(FileError{"fcntl", errno});
    endRequestPipe = ends[1];

    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        if (!endOn(signal)) return std::unexpected(FileError{"sigaction", errno});

    if (auto observer = SpoolSignal::Observer::start()) wakeUp.observer_ = std::move(*observer);
    return wakeUp;
}

WakeUp::Reason WakeUp::wait(std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) return Reason::timer;
        // poll(2) passes over a negative descriptor.
        std::array<pollfd, 2> descriptors{{
            {endRequests_.number(), POLLIN, 0},
            {observer_ ? observer_->fileDescriptor() : -1, POLLIN, 0},
        }};
        poll(descriptors.data(), descriptors.size(), static_cast<int>(left.count()));
        if ((descriptors[0].revents & POLLIN) != 0) return Reason::endRequested;
        // Of the other files in the signal's directory nothing is asked: sleep on.
        if (descriptors[1].revents != 0 && observer_->consume()) return Reason::posted;
    }
}

}  // namespace tallowbrook::host
