// The channels of a host that stays, and what a click on one of their notifications leads to.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Channels/Channel.h"
#include "EventBridge/TallowbrookPaths.h"
#include "Loop/ChildPrograms.h"
#include "Store/Database.h"
#include "Watch/Troubles.h"

namespace tallowbrook::host {

// All but the lines, which every host has. `exec` stands in place of the preference of that name.
// `mayAskTerminal` is false where something else reads what the terminal sends. `say` takes why
// something was not told. The database must outlive the channels.
std::vector<Channel> otherChannels(const TallowbrookPaths& paths, Database& database,
                                   const std::optional<std::string>& exec, Troubles::Say say,
                                   bool mayAskTerminal);

// Brings the session with this storage id to the front; empty: the next that waits. In a program of
// its own, since finding a window may take seconds.
void showClicked(const std::string& session, const TallowbrookPaths& paths, ChildPrograms& programs,
                 const Troubles::Say& say);

}  // namespace tallowbrook::host
