// The lock that writers and the drainer share: an exclusive advisory lock (flock(2)) on the spool's
// lock file, held while the value lives.
#pragma once

#include <expected>

#include "Domain/Instant.h"
#include "EventBridge/SpoolError.h"
#include "EventBridge/TallowbrookPaths.h"
#include "System/FileDescriptor.h"

namespace tallowbrook {

class SpoolLock {
 public:
    // Creates the lock file if need be, with mode 0600 whatever the umask; its directory must be
    // there. Tries every 2 ms for at most `timeout` of the monotonic clock, and once when that is
    // 0. The lock is that of the file in place: one deleted meanwhile is left for its successor.
    // Fails with `io("open-lock", …)`, with EINVAL for what is no regular file, `io("flock", …)` or
    // `lockTimeout`.
    [[nodiscard]] static std::expected<SpoolLock, SpoolError> acquire(const TallowbrookPaths& paths,
                                                                      Seconds timeout);

    SpoolLock(SpoolLock&&) = default;
    SpoolLock& operator=(SpoolLock&&) = default;
    ~SpoolLock();

 private:
    explicit SpoolLock(FileDescriptor file) : file_{std::move(file)} {}

    FileDescriptor file_;
};

}  // namespace tallowbrook
