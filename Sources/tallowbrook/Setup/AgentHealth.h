// How an agent's hooks, the helper and what has come of it fit together.
#pragma once

#include <array>
#include <expected>
#include <optional>
#include <string_view>
#include <utility>

#include "EventBridge/TallowbrookPaths.h"
#include "Integrations/ConfigFileWriter.h"
#include "Integrations/HookConfigMerger.h"
#include "Integrations/IntegrationHealth.h"
#include "Integrations/IntegrationSetup.h"
#include "Setup/Agents.h"
#include "Setup/HookObstacle.h"

namespace tallowbrook::host {

struct AgentHealth {
    enum class State {
        notSetUp,
        partial,      // some of the hooks are missing
        needsRepair,  // a hook calls another helper, or the helper cannot run
        waiting,      // for the first event since the setup
        silent,       // no event for longer than `healthGracePeriod` after the setup
        receiving,
        blocked,     // the agent does not run the hooks
        unreadable,  // the agent's file
    };

    Agent agent;
    std::expected<HookInstallState, ConfigPlanError> hooks;  // or why the file cannot be read
    bool isReady = false;  // all hooks are there, and the helper they call can run
    std::optional<HookObstacle> obstacle = {};  // looked for where it is ready
    IntegrationHealth events = {};              // not applicable also until they are judged

    // How the agent's files and the helper fit together. Reads the files.
    static AgentHealth of(const Agent& agent, const TallowbrookPaths& paths, HelperStatus helper,
                          const ManagedSettings& managed = ManagedSettings::ofThisSystem());

    // What has come since the setup, by what is stored of the agent. Updates `record`.
    void judgeEvents(IntegrationHealthRecord& record, Instant now);

    State state() const;

    // Whether the user should do something: set up again, or find out why nothing comes.
    bool needsAttention() const;
};

// The words that the user reads, in tables and in JSON.
inline constexpr std::array agentHealthStateNames{
    std::pair{AgentHealth::State::notSetUp, std::string_view{"not set up"}},
    std::pair{AgentHealth::State::partial, std::string_view{"partial"}},
    std::pair{AgentHealth::State::needsRepair, std::string_view{"needs repair"}},
    std::pair{AgentHealth::State::waiting, std::string_view{"waiting"}},
    std::pair{AgentHealth::State::silent, std::string_view{"silent"}},
    std::pair{AgentHealth::State::receiving, std::string_view{"receiving"}},
    std::pair{AgentHealth::State::blocked, std::string_view{"blocked"}},
    std::pair{AgentHealth::State::unreadable, std::string_view{"unreadable"}},
};
constexpr const auto& namesOf(AgentHealth::State) { return agentHealthStateNames; }

}  // namespace tallowbrook::host
