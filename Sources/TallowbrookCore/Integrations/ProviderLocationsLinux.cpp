#include <array>

#include "Integrations/ProviderLocations.h"

namespace tallowbrook {

std::span<const std::string_view> ProviderLocations::systemExtensionExecutables(Provider provider) {
    static constexpr std::array<std::string_view, 2> codexExecutables{"/bin/linux-aarch64/codex",
                                                                      "/bin/linux-x86_64/codex"};
    if (provider != Provider::codexCLI) return {};
    return codexExecutables;
}

}  // namespace tallowbrook
