#include "Domain/AgentProfile.h"

namespace tallowbrook {

std::span<const std::string_view> AgentLocations::systemExtensionExecutables() const {
    return linuxExtensionExecutables;
}

}  // namespace tallowbrook
