// What Codex notes about its sessions: the lock that a process keeps on a session for as long as it
// has it loaded, and the table of turns with how each ended.
#pragma once

#include <filesystem>

#include "Watch/AgentNotes.h"

namespace tallowbrook::host::CodexNotes {

AgentNotes in(const std::filesystem::path& home);

}  // namespace tallowbrook::host::CodexNotes
