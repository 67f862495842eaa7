#include "Setup/HookObstacle.h"

#include "Setup/ClaudeSettings.h"
#include "Setup/CodexSettings.h"

namespace tallowbrook::host {

std::string HookObstacle::text() const { return reason + "; " + cure; }

std::optional<HookObstacle> hookObstacle(const Agent& agent, const ManagedSettings& managed) {
    switch (agent.provider) {
        case Provider::claudeCode:
            return obstacleInClaudeSettings(agent.configFile, managed.claudeCode);
        case Provider::codexCLI:
            return obstacleInCodexSettings(agent.configFile, managed.codex);
    }
    return std::nullopt;
}

}  // namespace tallowbrook::host
