// Takes in what the spool holds when no host does.
#pragma once

#include "EventBridge/TallowbrookPaths.h"
#include "Store/Database.h"

namespace tallowbrook::host {

// Stores the events as a host would; what is to be told is left for the next host. Does nothing
// while a host leads, or where the spool cannot be claimed or read. Throws SQLite::Exception when
// the database fails.
void takeInUnlessWatched(const TallowbrookPaths& paths, Database& database);

}  // namespace tallowbrook::host
