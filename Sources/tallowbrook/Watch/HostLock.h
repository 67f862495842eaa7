// Decides which of several hosts on one home drains its spool: an advisory lock (flock(2)) on a
// file of the home, held while the value lives and free again when its holder dies.
#pragma once

#include <expected>
#include <optional>

#include "EventBridge/TallowbrookPaths.h"
#include "System/FileDescriptor.h"

namespace tallowbrook::host {

class HostLock {
 public:
    static std::filesystem::path file(const TallowbrookPaths& paths);

    // Absent when another process holds the lock. Waits 50 ms for that, longer than anybody holds
    // it who only looks. Creates the home if need be, and the file with mode 0600 whatever the
    // umask. The lock is that of the file in place: one deleted meanwhile is left for its
    // successor.
    [[nodiscard]] static std::expected<std::optional<HostLock>, FileError> tryAcquire(
        const TallowbrookPaths& paths);

    // False once the file was removed or replaced, with the home perhaps: the lock then keeps no
    // other host away.
    bool isInPlace(const TallowbrookPaths& paths) const;

    // Whether some process holds the lock now; for those who only look.
    static bool isHeld(const TallowbrookPaths& paths);

 private:
    explicit HostLock(FileDescriptor file) : file_{std::move(file)} {}

    FileDescriptor file_;
};

}  // namespace tallowbrook::host
