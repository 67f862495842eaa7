// `tallowbrook mute` and `unmute`: hear nothing of one session, or of one project, for a while.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "Commands/PauseCommand.h"
#include "EventBridge/TallowbrookPaths.h"
#include "Preferences/Mutes.h"
#include "Store/Database.h"

namespace tallowbrook::host {

class CommandLine;

// `name`: a session as lists name it, else a project's name. Gives the exit status: 0, 1 when the
// database cannot be used, 2 where neither is known or the words are no time; nothing is changed
// then.
int mute(const TallowbrookPaths& paths, const std::string& name, const EndWordsGiven& end);

// Of this name, or all. Gives the exit status: as `mute`, and 2 where it was not muted.
int unmute(const TallowbrookPaths& paths, const std::optional<std::string>& name);

// Changes what is muted, as of now. Throws SQLite::Exception when the database fails.
void changeMutes(Database& database, Instant now, const std::function<void(Mutes&)>& how);

// Adds both to the command line.
void addMuteCommands(CommandLine& line);

}  // namespace tallowbrook::host
