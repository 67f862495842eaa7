#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "System/ProcessLaunch.h"

namespace tallowbrook {

std::optional<ProcessLaunch::Pipe> ProcessLaunch::makeSystemPipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
    return Pipe{FileDescriptor{ends[0]}, FileDescriptor{ends[1]}};
}

bool ProcessLaunch::closeOtherDescriptors(posix_spawn_file_actions_t& actions, short&) {
    // A child that inherited the lock file would hold its lock for as long as it runs.
    return posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1) == 0;
}

void ProcessLaunch::awaitExit(pid_t child) {
    // Left to be reaped, so that its id belongs to no other process before the caller says so.
    siginfo_t ignored;
    while (waitid(P_PID, static_cast<id_t>(child), &ignored, WEXITED | WNOWAIT) != 0 &&
           errno == EINTR)
        continue;
}

}  // namespace tallowbrook
