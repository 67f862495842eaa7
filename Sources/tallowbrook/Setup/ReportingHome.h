// The home that the agents' events arrive in.
#pragma once

#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook::host {

// Whether these are the paths of the standard home, however it is spelled: with a slash at its end
// or through a link. The hooks name no home, so the helper that an agent runs reports there alone.
bool agentsReportTo(const TallowbrookPaths& paths);

}  // namespace tallowbrook::host
