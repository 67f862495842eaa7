#include <fcntl.h>
#include <sys/event.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>

#include "System/ProcessLaunch.h"

namespace tallowbrook {

std::optional<ProcessLaunch::Pipe> ProcessLaunch::makeSystemPipe() {
    // There is no pipe2(2) here: a program that another thread starts between the two calls
    // inherits the ends.
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return std::nullopt;
    Pipe made{FileDescriptor{ends[0]}, FileDescriptor{ends[1]}};
    for (const int end : ends)
        if (fcntl(end, F_SETFD, FD_CLOEXEC) != 0) return std::nullopt;
    return made;
}

// The descriptors that the actions themselves have opened stay open.
bool ProcessLaunch::closeOtherDescriptors(posix_spawn_file_actions_t&, short& flags) {
    flags = static_cast<short>(flags | POSIX_SPAWN_CLOEXEC_DEFAULT);
    return true;
}

// By kqueue(2), since waitid(2) here also returns for a child that was merely stopped.
void ProcessLaunch::awaitExit(pid_t child) {
    const FileDescriptor queue{kqueue()};
    if (!queue.isOpen()) return;
    struct kevent watched{};
    EV_SET(&watched, static_cast<std::uintptr_t>(child), EVFILT_PROC, EV_ADD | EV_ONESHOT,
           NOTE_EXIT, 0, nullptr);
    struct kevent event{};
    // Fails with ESRCH for a child that has exited already.
    while (kevent(queue.number(), &watched, 1, &event, 1, nullptr) < 0 && errno == EINTR) continue;
}

}  // namespace tallowbrook
