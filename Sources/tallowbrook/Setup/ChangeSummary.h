// A change to an agent's configuration file in a few words, for a user whose screen the whole
// difference does not fit on.
//
// A pure function; safe from any thread.
#pragma once

#include <string>

#include "Integrations/ConfigFileWriter.h"

namespace tallowbrook::host {

// "adds 9 hooks and 1 comma, nothing else": the helper's hooks that come and go, told apart
// by their events and contents, and how many lines beside theirs differ. "nothing to change" for a
// plan that writes nothing; "to be created" comes first where there is no file.
std::string summaryOf(const ConfigChangePlan& plan);

}  // namespace tallowbrook::host
