// The backups of the agents' configuration files, and what each of them holds.
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "EventBridge/TallowbrookPaths.h"
#include "Integrations/IntegrationSetup.h"
#include "Setup/Agents.h"

namespace tallowbrook::host {

struct AgentBackup {
    enum class State {
        beforeSetup,  // holds none of our hooks
        setUp,        // holds some, of whatever helper
        unreadable,   // cannot be read, or has no shape that an agent's file has
    };

    Agent agent;
    ConfigBackup backup;
    std::filesystem::file_time_type writtenAt;  // the earliest time where the system does not tell
    std::optional<std::string> text;            // absent where it cannot be read
    State state;
};

// The words that the user reads.
inline constexpr std::array agentBackupStateNames{
    std::pair{AgentBackup::State::beforeSetup, std::string_view{"before setup"}},
    std::pair{AgentBackup::State::setUp, std::string_view{"set up"}},
    std::pair{AgentBackup::State::unreadable, std::string_view{"unreadable"}},
};
constexpr const auto& namesOf(AgentBackup::State) { return agentBackupStateNames; }

// Those of these agents' files, newest first. Reads them all.
std::vector<AgentBackup> backupsOf(const std::vector<Agent>& agents, const TallowbrookPaths& paths);

}  // namespace tallowbrook::host
