// `tallowbrook explain`: why a session has its status.
#pragma once

#include <string>

#include "EventBridge/TallowbrookPaths.h"
#include "SessionState/SessionSnapshot.h"
#include "Store/Database.h"

namespace tallowbrook::host {

class CommandLine;

// A paragraph, and the session's last events. Gives the exit status: 0, 1 when the database cannot
// be read, 2 when the word names no session or several.
int explain(const TallowbrookPaths& paths, const std::string& session);

// What it shows, as lines. Throws SQLite::Exception when the database fails.
std::string explanationOf(const SessionSnapshot& session, Database& database, Instant now);

// Adds the command to the command line.
void addExplainCommand(CommandLine& line);

}  // namespace tallowbrook::host
