#include "EventBridge/SpoolLock.h"

#include <sys/file.h>

#include <cerrno>

#include "System/LockFile.h"

namespace tallowbrook {
namespace {

// flock(2) waits for ever or not at all, and its alarm clock, SIGALRM, is the watchdog's. An append
// takes 9 µs under the lock, so a pause of this length is seldom followed by another.
constexpr useconds_t pauseMicroseconds = 2000;

}  // namespace

std::expected<SpoolLock, SpoolError> SpoolLock::acquire(const TallowbrookPaths& paths,
                                                        Seconds timeout) {
    const auto path = paths.spoolLockFile();
    const auto failure = [](const FileError& error) {
        return std::unexpected(SpoolError::io("open-lock", error.errorNumber));
    };
    auto file = LockFile::open(path);
    if (!file) return failure(file.error());

    const auto start = std::chrono::steady_clock::now();
    while (true) {
        const bool isLocked = flock(file->number(), LOCK_EX | LOCK_NB) == 0;
        if (!isLocked && errno != EWOULDBLOCK && errno != EINTR)
            return std::unexpected(SpoolError::io("flock", errno));
        if (isLocked) {
            const auto place = LockFile::placeOf(*file, path);
            if (!place) return failure(place.error());
            if (*place == LockFile::Place::kept) return SpoolLock{std::move(*file)};
        }
        if (std::chrono::steady_clock::now() - start >= timeout)
            return std::unexpected(SpoolError::lockTimeout());
        if (!isLocked) {
            usleep(pauseMicroseconds);
            continue;
        }
        // Others lock the file that is in place by now.
        file = LockFile::open(path);
        if (!file) return failure(file.error());
    }
}

SpoolLock::~SpoolLock() {
    // A forked child may still share the open file: closing alone would leave it locked.
    if (file_.isOpen()) flock(file_.number(), LOCK_UN);
}

}  // namespace tallowbrook
