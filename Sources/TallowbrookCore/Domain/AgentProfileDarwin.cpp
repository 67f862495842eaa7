#include "Domain/AgentProfile.h"

namespace tallowbrook {

// Those of this system are `extensionExecutables`, which every system looks for.
std::span<const std::string_view> AgentLocations::systemExtensionExecutables() const { return {}; }

}  // namespace tallowbrook
