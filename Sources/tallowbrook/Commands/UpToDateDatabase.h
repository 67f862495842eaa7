// The database for commands that show what is known: what helpers have recorded is taken in first
// where no host runs that does so, and where that cannot be, the user is told how old it is.
//
// All that is said goes to standard error: JSON on standard output stays whole.
#pragma once

#include <functional>

#include "EventBridge/TallowbrookPaths.h"
#include "Store/Database.h"

namespace tallowbrook::host {

// As `withDatabaseIfAny`, behind that: there is none to show where nothing was ever recorded
// either, and none is made then. In a home that may not be written the database is opened to be
// read.
int withUpToDateDatabase(const TallowbrookPaths& paths,
                         const std::function<int(Database*)>& action);

// As `withExistingDatabase`, behind that.
int withUpToDateSessions(const TallowbrookPaths& paths,
                         const std::function<int(Database&)>& action);

}  // namespace tallowbrook::host
