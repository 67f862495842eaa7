// `tallowbrook preferences`: shows and changes what the user wants to be told.
#pragma once

#include <optional>
#include <string>

#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook::host {

class CommandLine;

// Both as the user typed them; `setPreference` says which values there are.
struct PreferenceChange {
    std::string name;
    std::string value;
};

// Shows the preferences, or makes the change first. Gives the exit status: 0, 1 when the database
// cannot be used, 2 for an unknown name or a value that does not fit; nothing is changed then.
int preferences(const TallowbrookPaths& paths, const std::optional<PreferenceChange>& change);

// Adds the command to the command line.
void addPreferencesCommand(CommandLine& line);

}  // namespace tallowbrook::host
