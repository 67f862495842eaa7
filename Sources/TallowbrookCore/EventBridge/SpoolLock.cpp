#include "EventBridge/SpoolLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

namespace tallowbrook {
namespace {

// flock(2) waits for ever or not at all, and its alarm clock, SIGALRM, is the watchdog's. An append
// takes 9 µs under the lock, so a pause of this length is seldom followed by another.
constexpr useconds_t pauseMicroseconds = 2000;

}  // namespace

std::expected<SpoolLock, SpoolError> SpoolLock::acquire(const TallowbrookPaths& paths,
                                                        Seconds timeout) {
    // The file is never removed: one process could hold a lock on the removed file while the next
    // one locks its successor.
    FileDescriptor file{open(paths.spoolLockFile().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)};
    if (!file.isOpen()) return std::unexpected(SpoolError::io("open-lock", errno));

    const auto start = std::chrono::steady_clock::now();
    while (flock(file.number(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return std::unexpected(SpoolError::io("flock", errno));
        if (std::chrono::steady_clock::now() - start >= timeout)
            return std::unexpected(SpoolError::lockTimeout());
        usleep(pauseMicroseconds);
    }
    return SpoolLock{std::move(file)};
}

SpoolLock::~SpoolLock() {
    // A forked child may still share the open file: closing alone would leave it locked.
    if (file_.isOpen()) flock(file_.number(), LOCK_UN);
}

}  // namespace tallowbrook
