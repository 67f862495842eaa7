// `tallowbrook pause` and `resume`: hold all notifications back for a while.
#pragma once

#include <optional>
#include <string>

#include "EventBridge/TallowbrookPaths.h"
#include "Store/Database.h"

namespace tallowbrook::host {

class CommandLine;

// The words of the command line behind the command's.
struct EndWordsGiven {
    std::optional<std::string> first;
    std::optional<std::string> second;
};

// Pauses until then; a later pause takes the place of this one. Gives the exit status: 0, 1 when
// the database cannot be used, 2 for words that are no time; nothing is changed then.
int pause(const TallowbrookPaths& paths, const EndWordsGiven& end);

// Ends the pause, if there is one. Gives the exit status as `pause` does.
int resume(const TallowbrookPaths& paths);

// Begins a pause, until then or until the user says so, or ends it. Throws SQLite::Exception when
// the database fails.
void setPause(Database& database, bool isPaused, std::optional<Instant> until);

// Adds both to the command line.
void addPauseCommands(CommandLine& line);

}  // namespace tallowbrook::host
