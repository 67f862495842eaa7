// `tallowbrook preferences`: shows and changes what the user wants to be told.
#pragma once

#include <optional>
#include <string>

#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook::host {

class CommandLine;

// As the user typed it; `setPreference` says which values there are. Without a value the preference
// is to have its default.
struct PreferenceChange {
    std::string name;
    std::optional<std::string> value;
};

// Shows all preferences, or the one of this name. Makes no database. Gives the exit status: 0, 1
// when the database cannot be used, 2 for an unknown name.
int showPreferences(const TallowbrookPaths& paths, const std::optional<std::string>& name);

// Makes the change and shows all preferences. Gives the exit status: 0, 1 when the database cannot
// be used, 2 for an unknown name or a value that does not fit; nothing is changed then.
int changePreference(const TallowbrookPaths& paths, const PreferenceChange& change);

// Adds the command to the command line.
void addPreferencesCommand(CommandLine& line);

}  // namespace tallowbrook::host
