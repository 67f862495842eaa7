// `tallowbrook wait`: for scripts that go on when an agent needs its user or is done.
#pragma once

#include <optional>
#include <string>

#include "Domain/Instant.h"
#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook::host {

class CommandLine;

// Waits for one session, or without a word for any. One that needs its user, or that is done, ends
// the wait at once; where any session will do, only what is done from the call on counts as news.
// Takes in the spool by itself while no host runs. Gives the exit status: 0 for a turn that was
// completed, 5 when the session needs its user, 6 when it failed or was broken off, 124 when the
// time is over, 1 when the database cannot be read, 2 for a word that names no session.
int waitForSession(const TallowbrookPaths& paths, const std::optional<std::string>& session,
                   std::optional<Seconds> timeout);

// Adds the command to the command line.
void addWaitCommand(CommandLine& line);

}  // namespace tallowbrook::host
