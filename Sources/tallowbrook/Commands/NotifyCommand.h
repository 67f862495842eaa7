// `tallowbrook notify --test`: shows a notification where the user would be told.
#pragma once

#include <chrono>

#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook::host {

class CommandLine;

// How long a click is waited for.
inline constexpr std::chrono::seconds timeToClick{30};

// Shows a notification by each rung of the ladder that would be used, says which, and waits so long
// for the user to click on it, where a click can be told, or until SIGINT. Gives the exit status: 0
// when it was shown, 1 when it could not be shown, 3 when there is no such channel; the reasons are
// on standard output.
int testNotification(const TallowbrookPaths& paths, std::chrono::seconds patience = timeToClick);

// Adds the command to the command line.
void addNotifyCommand(CommandLine& line);

}  // namespace tallowbrook::host
