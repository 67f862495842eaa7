// Claude Code's record of each of its processes, sessions/PID.json in its configuration directory:
// which session the process is at, and whether it works, waits or is idle.
#pragma once

#include <filesystem>
#include <string_view>

#include "Watch/AgentNotes.h"

namespace tallowbrook::host::ClaudeNotes {

AgentNotes in(const std::filesystem::path& configDirectory);

// The members of a record that are read, as far as they are there with the right type.
struct Record {
    std::optional<std::int32_t> pid;
    std::string start;  // "procStart"
    std::optional<Instant> startedAt;
    std::string sessionID;
    std::string status;
    std::string waitingFor;
    std::optional<Instant> statusSince;
    bool operator==(const Record&) const = default;
};

// Absent for what is no whole JSON object. Of every other member not even the text is kept.
std::optional<Record> parse(std::string_view text);

}  // namespace tallowbrook::host::ClaudeNotes
