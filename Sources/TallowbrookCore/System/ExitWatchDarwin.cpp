#include <sys/event.h>
#include <unistd.h>

#include <cstdint>
#include <ctime>

#include "System/ExitWatch.h"

namespace tallowbrook {

// A kqueue(2) may itself be waited on by poll(2).
ExitWatch::ExitWatch() : queue_{kqueue()} {}

// Fails with ESRCH for a child that has exited already.
bool ExitWatch::add(pid_t child) {
    struct kevent watched{};
    EV_SET(&watched, static_cast<std::uintptr_t>(child), EVFILT_PROC, EV_ADD | EV_ONESHOT,
           NOTE_EXIT, 0, nullptr);
    return kevent(queue_.number(), &watched, 1, nullptr, 0, nullptr) == 0;
}

void ExitWatch::consume() {
    struct kevent event{};
    const timespec atOnce{};
    while (kevent(queue_.number(), nullptr, 0, &event, 1, &atOnce) > 0) continue;
}

}  // namespace tallowbrook
