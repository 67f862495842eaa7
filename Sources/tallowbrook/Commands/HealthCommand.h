// `tallowbrook health`: whether the agents' events arrive, and whether a host runs.
#pragma once

#include "Commands/SessionsCommand.h"
#include "EventBridge/TallowbrookPaths.h"
#include "Setup/Agents.h"

namespace tallowbrook::host {

class CommandLine;

// Shows the host, the helper and the state of each chosen agent, as a table or as a JSON object
// (RFC 8259). Takes in first what the spool holds when no host runs, and keeps what it finds out
// about the setup in the store, where there is one. Gives the exit status: 0, 1 for a failure, 3
// when an agent that is set up needs attention, 4 when none does but no host runs.
int showHealth(const TallowbrookPaths& paths, const AgentChoice& choice, ListFormat format);

// Adds the command to the command line.
void addHealthCommand(CommandLine& line);

}  // namespace tallowbrook::host
