// `tallowbrook doctor`: a report that can be pasted into a request for help.
#pragma once

#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook::host {

// Looks at everything and changes nothing. Runs each agent that is installed once, to ask for its
// version. Gives the exit status: 0, or 1 when the report cannot be written.
int doctor(const TallowbrookPaths& paths);

}  // namespace tallowbrook::host
