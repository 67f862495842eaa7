// The agents of this machine and their configuration files.
#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Domain/AgentEvent.h"
#include "EventBridge/TallowbrookPaths.h"
#include "Integrations/ProviderDetector.h"
#include "Output/Sentence.h"

namespace tallowbrook::host {

struct Agent {
    Provider provider = Provider::claudeCode;
    std::filesystem::path configFile;  // absolute; need not exist
    bool isThere = false;              // installed, or has a configuration directory
    bool operator==(const Agent&) const = default;

    // Where backups of the configuration file are kept: a directory of its own for each directory
    // they come from, since an agent may have several, with files of the same name. No two share
    // one, and its name is one that a file system takes.
    std::filesystem::path backupDirectory(const TallowbrookPaths& paths) const;
};

// What the user says about agents on the command line.
struct AgentChoice {
    std::vector<std::string> names;                   // such as "claude-code"
    std::optional<std::filesystem::path> configFile;  // instead of the agent's own
};

// `ProviderDetector::live` without asking for versions, which would run every agent, and without
// the relative directories of PATH: what they hold depends on where the user stands.
ProviderDetector agentDetector();

// "claude-code" and "codex", as the user names them.
std::vector<std::string> agentNames();

// "claude-code or codex", for sentences.
std::string agentNameChoice();

// Every agent, in the order of `Provider`. Each one's configuration lies where its own environment
// variable says (`AgentProfile`), else below the user's home directory.
std::vector<Agent> allAgents();

// Which agents are meant when the user names none.
enum class Unnamed { thoseThere, all };

// Each agent that the choice means, once.
[[nodiscard]] std::expected<std::vector<Agent>, Sentence> chosenAgents(const AgentChoice& choice,
                                                                       Unnamed unnamed);

}  // namespace tallowbrook::host
