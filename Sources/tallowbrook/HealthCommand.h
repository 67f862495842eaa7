// `tallowbrook health`: whether the agents' events arrive.
#pragma once

#include <expected>
#include <string>
#include <string_view>
#include <vector>

#include "Agents.h"
#include "EventBridge/TallowbrookPaths.h"
#include "Integrations/HookConfigMerger.h"
#include "Integrations/IntegrationHealth.h"
#include "Integrations/IntegrationSetup.h"
#include "SessionsCommand.h"

namespace tallowbrook::host {

struct AgentHealth {
    Agent agent;
    std::expected<HookInstallState, std::string> hooks;  // or why the file cannot be read
    IntegrationHealth events;

    // "not set up", "partial", "needs repair", "waiting", "silent", "receiving" or "unreadable".
    std::string_view state() const;

    // Whether the user should do something: set up again, or find out why nothing comes.
    bool needsAttention() const;
};

// How the agent's file and the helper fit together, and what has come since. Updates `record`.
AgentHealth healthOf(const Agent& agent, const TallowbrookPaths& paths, HelperStatus helper,
                     IntegrationHealthRecord& record, Instant now);

// Gives the exit status: 0, 1 for a failure, 3 when an agent that is set up needs attention.
int showHealth(const TallowbrookPaths& paths, const AgentChoice& choice, ListFormat format);

}  // namespace tallowbrook::host
