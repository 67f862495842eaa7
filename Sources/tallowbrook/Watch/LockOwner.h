// Which process holds a lock on a file, see flock(2).
//
// Safe from any thread. One implementation per system.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>

namespace tallowbrook::host {

// Absent when no process holds the file's lock, and where the system does not tell: never told are
// the processes of other users, a process that has ended and left its lock to a child, and on macOS
// any. What was learned may be out of date at once.
std::optional<pid_t> lockOwner(const std::filesystem::path& file);

}  // namespace tallowbrook::host
