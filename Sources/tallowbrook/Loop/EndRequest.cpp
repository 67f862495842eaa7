#include "Loop/EndRequest.h"

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
    // A full pipe holds requests enough.
    [[maybe_unused]] const ssize_t written = write(endRequestPipe, "x", 1);
    errno = savedError;
}

bool requestEndOn(int signal) {
    struct sigaction action{};
    if (sigaction(signal, nullptr, &action) != 0) return false;
    if (action.sa_handler == SIG_IGN) return true;
    action = {};
    action.sa_handler = requestEnd;
    return sigaction(signal, &action, nullptr) == 0;
}

// A handler must never wait, and a child must not inherit the pipe.
bool prepareEnd(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) == 0 &&
           fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0;
}

}  // namespace

std::expected<EndRequest, FileError> EndRequest::receive() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return std::unexpected(FileError{"pipe", errno});
    EndRequest request{FileDescriptor{ends[0]}};
    if (!prepareEnd(ends[0]) || !prepareEnd(ends[1]))
        return std::unexpected(FileError{"fcntl", errno});
    endRequestPipe = ends[1];
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        if (!requestEndOn(signal)) return std::unexpected(FileError{"sigaction", errno});
    return request;
}

PollSource EndRequest::source(PollLoop& loop) const {
    return {
        .interest = [this] { return PollInterest{requests_.number(), POLLIN, std::nullopt}; },
        .proceed = [&loop](short) { loop.requestEnd(); },
    };
}

}  // namespace tallowbrook::host
