#include "Setup/Agents.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdint>

#include "Integrations/HookInstallSpec.h"
#include "Watch/AgentDirectory.h"

namespace tallowbrook::host {
namespace {

Agent locate(Provider provider) {
    const auto detector = agentDetector();
    const auto detection = detector.detect(provider);
    Agent agent{provider, detection.hookConfigPath,
                detection.state != ProviderDetection::State::notDetected};
    if (const auto directory = movedAgentDirectory(provider)) {
        agent.configFile = *directory / agent.configFile.filename();
        agent.isThere = agent.isThere || detector.isDirectory(directory->string());
    }
    return agent;
}

// A path as one name, which no other path has: an absolute one without a % becomes a name that
// begins with %, any other one a name that does not.
std::string asOneName(const std::string& path) {
    if (!path.contains('%')) {
        auto name = path;
        std::ranges::replace(name, '/', '%');
        return name;
    }
    std::string name = "=";
    for (const char c : path) name += c == '%' ? "%25" : c == '/' ? "%2F" : std::string{c};
    return name;
}

// 128 bits, as two FNV-1a hashes with different beginnings.
std::string fingerprint(std::string_view text) {
    constexpr std::uint64_t prime = 0x100000001B3;
    std::string digits;
    for (std::uint64_t hash : {0xCBF29CE484222325ULL, 0x9E3779B97F4A7C15ULL}) {
        for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * prime;
        digits += fmt::format("{:016x}", hash);
    }
    return digits;
}

}  // namespace

std::filesystem::path Agent::backupDirectory(const TallowbrookPaths& paths) const {
    constexpr std::size_t longestName = 255;  // of POSIX file systems, in bytes
    const auto directory = configFile.parent_path().string();
    auto name = asOneName(directory);
    if (name.size() > longestName) name = "#" + fingerprint(directory);
    return paths.backupsDirectory() / name;
}

ProviderDetector agentDetector() {
    auto detector = ProviderDetector::live(false);
    std::erase_if(detector.searchPath,
                  [](const std::string& directory) { return !directory.starts_with('/'); });
    return detector;
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
