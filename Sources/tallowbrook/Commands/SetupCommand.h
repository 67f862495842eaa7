// `tallowbrook setup` and `tallowbrook remove`: the helper's hooks in the agents' configuration.
#pragma once

#include "EventBridge/TallowbrookPaths.h"
#include "Setup/Agents.h"
#include "Setup/ConfigChange.h"

namespace tallowbrook::host {

class CommandLine;

// Both change the agents' own files only for the home that the agents report to; another home needs
// `choice.configFile`, a file to try on, unless it is a dry run. Without, status 2.

// Names every file first, installs or renews the helper, changes the configuration of each chosen
// agent after a yes, and proves with a test event that the helper reaches the store. Gives the exit
// status: 0, 1 for a failure, 2 as above, 3 when the user said no to a change.
int setup(const TallowbrookPaths& paths, const AgentChoice& choice, const ReviewOptions& options);

// Takes the hooks out again, with the same statuses. The helper stays: sessions that run may still
// call it.
int removeSetup(const TallowbrookPaths& paths, const AgentChoice& choice,
                const ReviewOptions& options);

// Adds both commands to the command line.
void addSetupCommands(CommandLine& line);

}  // namespace tallowbrook::host
