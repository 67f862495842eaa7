#include "Watch/SessionLock.h"

namespace tallowbrook::host {

// The kernel keeps such locks to itself.
LockLook lookAtLock(const std::filesystem::path& file) { return {probeLock(file), std::nullopt}; }

}  // namespace tallowbrook::host
