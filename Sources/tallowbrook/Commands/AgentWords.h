// Words that several commands on the agents' configuration take.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Commands/CommandLine.h"
#include "Setup/Agents.h"
#include "Setup/ConfigChange.h"

namespace tallowbrook::host {

struct AgentWords {
    std::vector<std::string> names;
    std::optional<std::string> configFile;
    bool editors = false;
    ReviewOptions review;

    AgentChoice choice() const;
    // Whether the words say both that editors and that agents are meant.
    bool contradictThemselves() const { return editors && (!names.empty() || configFile); }

    // AGENT…, and --config FILE. `whenUnnamed` says which agents are meant without names.
    void addAgents(CommandWords& words, const std::string& whenUnnamed);
    // --editors, in the place of agents. `meaning` says what happens to the extension.
    void addEditors(CommandWords& words, const std::string& meaning);
    void addConfigFile(CommandWords& words);
    // --dry-run and --yes.
    void addReview(CommandWords& words);
};

// Help for commands that change a configuration file.
extern const std::string changeHelp;

}  // namespace tallowbrook::host
