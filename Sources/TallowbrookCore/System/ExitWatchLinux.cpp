#include <poll.h>
#include <sys/epoll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "System/ExitWatch.h"

namespace tallowbrook {

ExitWatch::ExitWatch() : queue_{epoll_create1(EPOLL_CLOEXEC)} {}

bool ExitWatch::add(pid_t child) {
    // The C library has no function for it before its version 2.36.
    FileDescriptor file{static_cast<int>(syscall(SYS_pidfd_open, child, 0))};
    epoll_event event{.events = EPOLLIN, .data = {}};
    if (!file.isOpen() || epoll_ctl(queue_.number(), EPOLL_CTL_ADD, file.number(), &event) != 0)
        return false;
    children_.push_back(std::move(file));
    return true;
}

void ExitWatch::consume() {
    // With its descriptor closed, the queue forgets a child.
    std::erase_if(children_, [](const FileDescriptor& child) {
        pollfd exit{child.number(), POLLIN, 0};
        return poll(&exit, 1, 0) > 0;
    });
}

}  // namespace tallowbrook
