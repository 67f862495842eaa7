// `tallowbrook sessions`: lists what the store knows, without reading the spool.
#pragma once

#include "EventBridge/TallowbrookPaths.h"
#include "Lists/SessionList.h"

namespace tallowbrook::host {

class CommandLine;

enum class ListFormat { table, json };

// Gives the exit status: 0, or 1 when the database cannot be read. A home without a database has
// no sessions; none is created.
int listSessions(const TallowbrookPaths& paths, ListScope scope, ListFormat format);

// Adds the command to the command line.
void addSessionsCommand(CommandLine& line);

}  // namespace tallowbrook::host
