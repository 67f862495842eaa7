#include "Watch/LockOwner.h"
#include "Watch/SessionLock.h"

namespace tallowbrook::host {

// The kernel lists who holds what, but not the processes of other containers, and not those that
// have left the lock to a child. So a lock is only called free once it was to be had.
LockLook lookAtLock(const std::filesystem::path& file) {
    if (const auto owner = lockOwner(file)) return {SessionLock::held, owner};
    return {probeLock(file), std::nullopt};
}

}  // namespace tallowbrook::host
