// `tallowbrook watch`: moves events from the spool into the store and tells the user.
#pragma once

#include <optional>
#include <string>

#include "EventBridge/TallowbrookPaths.h"
#include "Output/ColourChoice.h"

namespace tallowbrook::host {

class CommandLine;

enum class WatchMode {
    stay,  // until SIGINT, SIGTERM or SIGHUP
    once,  // one pass over what is there
};

enum class WatchOutput {
    view,   // the live view where there is a terminal for it, else lines
    lines,  // a line for each notification
    json,   // a JSON object for each notification and each change of a session
};

struct WatchOptions {
    WatchMode mode = WatchMode::stay;
    WatchOutput output = WatchOutput::view;  // of a host that stays
    ColourChoice colours = ColourChoice::automatic;
    // A command that is run for each notification in place of the preference of that name; not
    // together with `once`, which waits for no program.
    std::optional<std::string> exec = {};
};

// Gives the exit status: 0, or 1 when the home or the database cannot be used, and of `once` also
// when a part of the spool could not be read; 2 for options that do not fit together. Where another
// host watches this home already, says so and shows what that one tells; takes over when it ends.
// One that stays and prints lines greets first (`greeting`); `once` does so only on a terminal,
// where no script reads.
int watch(const TallowbrookPaths& paths, const WatchOptions& options);

// Adds the command to the command line.
void addWatchCommand(CommandLine& line);

}  // namespace tallowbrook::host
