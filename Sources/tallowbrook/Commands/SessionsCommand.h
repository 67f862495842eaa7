// `tallowbrook sessions`: lists what is known.
#pragma once

#include "EventBridge/TallowbrookPaths.h"
#include "Lists/SessionList.h"

namespace tallowbrook::host {

class CommandLine;

enum class ListFormat { table, json };

// Takes in first what the spool holds when no host runs. Gives the exit status: 0, or 1 when the
// database cannot be read. A home where nothing was ever recorded has no sessions, and gets no
// database.
int listSessions(const TallowbrookPaths& paths, ListScope scope, ListFormat format);

// Adds the command to the command line.
void addSessionsCommand(CommandLine& line);

}  // namespace tallowbrook::host
