// `tallowbrook backups` and `tallowbrook restore`: what was in the agents' configuration files.
#pragma once

#include <optional>
#include <string>

#include "EventBridge/TallowbrookPaths.h"
#include "Setup/Agents.h"
#include "Setup/ConfigChange.h"

namespace tallowbrook::host {

class CommandLine;

// Lists the backups of the chosen agents, or of both, newest first and numbered, and what each
// holds. Gives the exit status.
int listBackups(const TallowbrookPaths& paths, const AgentChoice& choice);

// Puts one of them back after a yes: the newest without our hooks, or the one with this number,
// name or path. What is in the file now is kept as a backup first. Gives the exit status: 0, 1 for
// a failure, 2 when there is no such backup, 3 when the user said no.
int restoreBackup(const TallowbrookPaths& paths, const AgentChoice& choice,
                  const std::optional<std::string>& backup, const ReviewOptions& options);

// Adds both commands to the command line.
void addBackupsCommands(CommandLine& line);

}  // namespace tallowbrook::host
