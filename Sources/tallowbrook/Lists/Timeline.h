// Events as the user sees them, a line each.
#pragma once

#include <string>

#include "SessionState/SessionReducer.h"

namespace tallowbrook::host {

// "14:05  PermissionRequest  Bash  changed the status" in columns, with a line feed at its end. An
// event of another day than that of `now` begins with its date.
std::string timelineRow(const AgentEvent& event, EventEffect effect, Instant now);

}  // namespace tallowbrook::host
