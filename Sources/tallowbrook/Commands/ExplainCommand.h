// `tallowbrook explain`: why a session has its status, and what the user was told of it.
#pragma once

#include <string>

#include "EventBridge/TallowbrookPaths.h"
#include "Lists/SessionList.h"
#include "Store/Database.h"

namespace tallowbrook::host {

class CommandLine;

// A paragraph, the session's last events, and what was told of them, or why not. Takes in first
// what the spool holds when no host runs. Gives the exit status: 0, 1 when the database cannot be
// read, 2 when the word names no session or several.
int explain(const TallowbrookPaths& paths, const std::string& session);

// What it shows, as lines. Throws SQLite::Exception when the database fails.
std::string explanationOf(const ListedSession& listed, Database& database, Instant now);

// Adds the command to the command line.
void addExplainCommand(CommandLine& line);

}  // namespace tallowbrook::host
