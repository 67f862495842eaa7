// The agents among the processes, on a system where a session is found by its directory.
//
// Stateless; safe from any thread. What was learned may be out of date at once.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace tallowbrook::host {

// Whether an agent runs on this terminal device, such as /dev/pts/3.
bool agentRunsOn(const std::string& devicePath);

// The agents that work in a directory, with all of their ancestors.
std::vector<pid_t> agentFamiliesIn(const std::string& directory);

}  // namespace tallowbrook::host
