// `tallowbrook watch`: moves events from the spool into the store and tells the user.
#pragma once

#include <optional>
#include <string>

#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook::host {

class CommandLine;

enum class WatchMode {
    stay,  // until SIGINT, SIGTERM or SIGHUP
    once,  // one pass over what is there
};

// Gives the exit status: 0, or 1 when the home or the database cannot be used, and of `once` also
// when a part of the spool could not be read. `exec` is a command that is run for each notification
// in place of the preference of that name; the status is 2 together with `once`, which waits for no
// program. Where another host watches this home already, says so and shows what that one tells;
// takes over when it ends. One that stays greets first (`greeting`); `once` does so only on a
// terminal, where no script reads.
int watch(const TallowbrookPaths& paths, WatchMode mode,
          const std::optional<std::string>& exec = {});

// Adds the command to the command line.
void addWatchCommand(CommandLine& line);

}  // namespace tallowbrook::host
