// `tallowbrook focus` and `tallowbrook next`: to the window of a session.
#pragma once

#include <string>

#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook::host {

class CommandLine;

// Says what was done. Gives the exit status: 0, 1 when nothing could be done, 2 when the word names
// no session or several, 3 when something else was done instead.
int focus(const TallowbrookPaths& paths, const std::string& session);

// Focuses the first session that waits for the user, and with each repetition within ten seconds
// the one behind it. Gives the statuses of `focus`; 0 when no session waits.
int focusNext(const TallowbrookPaths& paths);

// Adds both commands to the command line.
void addFocusCommands(CommandLine& line);

}  // namespace tallowbrook::host
