// Decides which of several hosts on one home drains its spool: an advisory lock (flock(2)) on a
// file of the home, held while the value lives and free again when its holder dies.
#pragma once

#include <sys/types.h>

#include <expected>
#include <optional>
#include <string_view>

#include "Domain/Instant.h"
#include "EventBridge/TallowbrookPaths.h"
#include "System/FileDescriptor.h"

namespace tallowbrook::host {

// The process that holds the lock, as far as it has said who it is: a host that leads has, a
// process that only takes in the spool has not.
struct HostHolder {
    std::optional<pid_t> pid;
    std::optional<Instant> since;
};

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

    // Writes into the file which process leads from `now` on, since not every system tells who
    // holds a lock. Where that fails the lock holds all the same.
    void sign(Instant now) const;

    // Who holds the lock now; absent when nobody does. For a lock without a name it looks again for
    // up to 50 ms, until it has one or is free.
    static std::optional<HostHolder> holder(const TallowbrookPaths& paths);

 private:
    explicit HostLock(FileDescriptor file) : file_{std::move(file)} {}

    void write(std::string_view text) const;

    FileDescriptor file_;
};

}  // namespace tallowbrook::host
