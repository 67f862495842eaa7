// Takes in what the spool holds when no host does.
#pragma once

#include <vector>

#include "EventBridge/TallowbrookPaths.h"
#include "Output/Sentence.h"
#include "Store/Database.h"

namespace tallowbrook::host {

struct SpoolIntake {
    bool isWatched = false;          // a host leads, and takes in by itself what comes
    std::vector<Sentence> troubles;  // why something is still in the spool, or was skipped
};

// Stores the events as a host would; what is to be told, however old it is, is left for the next
// host. Does nothing while a host leads. Throws SQLite::Exception when the database fails; what was
// not stored by then is still in the spool.
SpoolIntake takeInUnlessWatched(const TallowbrookPaths& paths, Database& database);

}  // namespace tallowbrook::host
