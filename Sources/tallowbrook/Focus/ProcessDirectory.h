// The working directory of another process. One implementation per system.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace tallowbrook::host {

// Absent when no such process runs, when it belongs to another user, and where the system does not
// tell at all.
std::optional<std::string> directoryOfProcess(pid_t pid);

}  // namespace tallowbrook::host
