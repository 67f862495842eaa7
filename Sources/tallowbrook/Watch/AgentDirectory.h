// Where an agent keeps its own files.
#pragma once

#include <filesystem>
#include <optional>

#include "Domain/AgentEvent.h"

namespace tallowbrook::host {

// Where the agent's own environment variable says (`AgentProfile`), absolute; absent where the user
// has moved nothing. Reads the environment: not while another thread changes it.
std::optional<std::filesystem::path> movedAgentDirectory(Provider provider);

// The same, or else below the user's home directory; absent where that is not known.
std::optional<std::filesystem::path> agentDirectory(Provider provider);

}  // namespace tallowbrook::host
