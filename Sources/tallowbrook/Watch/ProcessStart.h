// Which process a process id means: the same id is given to another process later, but not with the
// same start.
//
// Safe from any thread. One implementation per system.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string_view>

#include "Domain/Instant.h"
#include "SessionState/AgentPresence.h"

namespace tallowbrook::host {

// When the process started, in the unit of its system. Absent when there is no such process, or
// only what is left of one until its parent has waited for it.
std::optional<std::int64_t> processStart(pid_t pid);

// What an agent notes about the start of its own process.
struct NotedStart {
    std::string_view text;             // as the agent has it from its system
    std::optional<Instant> agentsOwn;  // when the agent began to note anything
};

// Whether a process with this start may be the one that noted it.
bool isStartOf(const NotedStart& noted, std::int64_t start);

inline bool isAlive(const ProcessIdentity& process) {
    return processStart(process.pid) == process.start;
}

}  // namespace tallowbrook::host
