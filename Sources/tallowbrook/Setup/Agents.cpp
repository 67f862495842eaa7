#include "Setup/Agents.h"

#include <algorithm>
#include <cstdlib>

#include "Domain/AgentProfile.h"
#include "Integrations/HookInstallSpec.h"
#include "Integrations/ProviderDetector.h"

namespace tallowbrook::host {
namespace {

// Where the user has moved the agent's directory to.
std::optional<std::filesystem::path> movedDirectory(Provider provider) {
    const char* value = std::getenv(AgentProfile::of(provider).locations.configDirectoryVariable);
    if (value == nullptr || *value == '\0') return std::nullopt;
    return std::filesystem::absolute(value);
}

Agent locate(Provider provider) {
    // Without asking for versions, which would run every agent.
    const auto detector = ProviderDetector::live(false);
    const auto detection = detector.detect(provider);
    Agent agent{provider, detection.hookConfigPath,
                detection.state != ProviderDetection::State::notDetected};
    if (const auto directory = movedDirectory(provider)) {
        agent.configFile = *directory / agent.configFile.filename();
        agent.isThere = agent.isThere || detector.isDirectory(directory->string());
    }
    return agent;
}

}  // namespace

std::filesystem::path Agent::backupDirectory(const TallowbrookPaths& paths) const {
    auto name = configFile.parent_path().string();
    // A path as one name, which no other directory has unless a % is in theirs.
    std::ranges::replace(name, '/', '%');
    return paths.backupsDirectory() / name;
}

std::vector<std::string> agentNames() {
    std::vector<std::string> names;
    for (const auto provider : allCases<Provider>()) names.emplace_back(hookSourceWord(provider));
    return names;
}

std::string agentNameChoice() {
    std::string choice;
    for (const auto& name : agentNames()) choice += (choice.empty() ? "" : " or ") + name;
    return choice;
}

std::vector<Agent> allAgents() {
    std::vector<Agent> agents;
    for (const auto provider : allCases<Provider>()) agents.push_back(locate(provider));
    return agents;
}

std::expected<std::vector<Agent>, Sentence> chosenAgents(const AgentChoice& choice,
                                                         Unnamed unnamed) {
    auto agents = allAgents();
    std::erase_if(agents, [&](const Agent& agent) {
        if (choice.names.empty()) return unnamed == Unnamed::thoseThere && !agent.isThere;
        return std::ranges::find(choice.names, hookSourceWord(agent.provider)) ==
               choice.names.end();
    });
    if (choice.configFile) {
        // A file belongs to one agent: their formats differ.
        if (choice.names.empty() || agents.size() != 1)
            return std::unexpected(Sentence{"With --config, name the one agent whose file it is."});
        agents.front().configFile = std::filesystem::absolute(*choice.configFile);
    }
    if (agents.empty())
        return std::unexpected(Sentence{
            "No agent was found on this machine. Name the one you mean: " + agentNameChoice()});
    return agents;
}

}  // namespace tallowbrook::host
