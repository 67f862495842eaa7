#include "Watch/AgentDirectory.h"

#include <cstdlib>

#include "Domain/AgentProfile.h"
#include "System/UserHome.h"

namespace tallowbrook::host {

std::optional<std::filesystem::path> movedAgentDirectory(Provider provider) {
    const char* value = std::getenv(AgentProfile::of(provider).locations.configDirectoryVariable);
    if (value == nullptr || *value == '\0') return std::nullopt;
    return std::filesystem::absolute(value);
}

std::optional<std::filesystem::path> agentDirectory(Provider provider) {
    if (auto moved = movedAgentDirectory(provider)) return moved;
    const auto home = userHomeDirectory();
    if (!home) return std::nullopt;
    return home->string() + std::string{AgentProfile::of(provider).locations.configDirectory};
}

}  // namespace tallowbrook::host
