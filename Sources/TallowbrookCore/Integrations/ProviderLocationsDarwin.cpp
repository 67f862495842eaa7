#include "Integrations/ProviderLocations.h"

namespace tallowbrook {

std::span<const std::string_view> ProviderLocations::systemExtensionExecutables(Provider) {
    return {};
}

}  // namespace tallowbrook
