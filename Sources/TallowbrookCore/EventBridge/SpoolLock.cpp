#include "EventBridge/SpoolLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

namespace tallowbrook {
namespace {

constexpr useconds_t pauseMicroseconds = 2000;

}  // namespace

std::expected<SpoolLock, SpoolError> SpoolLock::acquire(const TallowbrookPaths& paths,
                                                        Seconds timeout) {
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
