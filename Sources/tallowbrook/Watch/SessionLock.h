// Whether a process keeps a lock on a file of another program, see flock(2).
//
// Never waits. One implementation per system.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>

#include "Watch/AgentNotes.h"

namespace tallowbrook::host {

struct LockLook {
    SessionLock lock = SessionLock::unknown;
    std::optional<pid_t> holder;  // where the system tells
};

// Disturbs no holder. Where the system does not tell of locks, the lock is taken for a moment to
// see whether it is free.
LockLook lookAtLock(const std::filesystem::path& file);

// Takes the lock, where it is free, and gives it back at once.
SessionLock probeLock(const std::filesystem::path& file);

}  // namespace tallowbrook::host
