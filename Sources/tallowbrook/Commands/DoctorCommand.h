// `tallowbrook doctor`: a report that can be pasted into a request for help.
#pragma once

#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook::host {

class CommandLine;

// Looks at everything and changes nothing. Runs each agent that is installed once, to ask for its
// version. Gives the exit status: 0, 1 when the report cannot be written, 4 when no host runs.
int doctor(const TallowbrookPaths& paths);

// Adds the command to the command line.
void addDoctorCommand(CommandLine& line);

}  // namespace tallowbrook::host
