// `tallowbrook health`: whether the agents' events arrive.
#pragma once

#include <expected>
#include <string>
#include <string_view>
#include <vector>

#include "Commands/SessionsCommand.h"
#include "EventBridge/TallowbrookPaths.h"
#include "Integrations/HookConfigMerger.h"
#include "Integrations/IntegrationHealth.h"
#include "Integrations/IntegrationSetup.h"
#include "Setup/Agents.h"

namespace tallowbrook::host {

struct AgentHealth {
    Agent agent;
    std::expected<HookInstallState, std::string> hooks;  // or why the file cannot be read
    bool isReady = false;                                // all hooks are there and call the helper
    IntegrationHealth events = {};  // not applicable also until they are judged

    // How the agent's file and the helper fit together. Reads the file.
    static AgentHealth of(const Agent& agent, const TallowbrookPaths& paths, HelperStatus helper);

    // What has come since the setup, by what is stored of the agent. Updates `record`.
    void judgeEvents(IntegrationHealthRecord& record, Instant now);

    // "not set up", "partial", "needs repair", "waiting", "silent", "receiving" or "unreadable".
    std::string_view state() const;

    // Whether the user should do something: set up again, or find out why nothing comes.
    bool needsAttention() const;
};

// Gives the exit status: 0, 1 for a failure, 3 when an agent that is set up needs attention.
int showHealth(const TallowbrookPaths& paths, const AgentChoice& choice, ListFormat format);

}  // namespace tallowbrook::host
