#include "Commands/AgentWords.h"

namespace tallowbrook::host {

const std::string changeHelp =
    "3: a question was answered with no; that file was left as it is.\n"
    "A configuration file is changed only after a yes or with --yes, and its backup is kept.\n"
    "Without a terminal to ask on and without --yes, nothing is changed and the status is 1.";

AgentChoice AgentWords::choice() const {
    AgentChoice choice{names, std::nullopt};
    if (configFile) choice.configFile = *configFile;
    return choice;
}

void AgentWords::addAgents(CommandWords& words, const std::string& whenUnnamed) {
    words.addChoices("AGENT", agentNames(), names,
                     agentNameChoice() + "; without names, " + whenUnnamed);
    addConfigFile(words);
}

void AgentWords::addEditors(CommandWords& words, const std::string& meaning) {
    words.addFlag("--editors", editors, meaning, "--config");
}

void AgentWords::addConfigFile(CommandWords& words) {
    words.addOption("--config", "FILE", configFile, "The configuration file to work on");
}

void AgentWords::addReview(CommandWords& words) {
    words.addFlag("--dry-run", review.dryRun, "Show what would change, and write nothing");
    words.addFlag("--yes,-y", review.assumeYes, "Agree to every change beforehand", "--dry-run");
}

}  // namespace tallowbrook::host
