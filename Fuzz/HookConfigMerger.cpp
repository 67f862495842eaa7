// Any bytes as a configuration file: each of the three operations takes it or none, an installation
// is complete and done once, and a removal leaves nothing of ours.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "Integrations/HookConfigMerger.h"

namespace {

using namespace tallowbrook;

void require(bool holds) {
    if (!holds) std::abort();
}

void merge(const std::string& text, const HookInstallSpec& spec) {
    const auto before = HookConfigMerger::inspect(text, spec);
    const auto installed = HookConfigMerger::install(text, spec);
    const auto removed = HookConfigMerger::uninstall(text, spec);
    require(installed.has_value() == before.has_value());
    require(removed.has_value() == before.has_value());
    if (!before) return;

    const bool wasInstalled = *before == HookInstallState::installed();
    require(HookConfigMerger::inspect(*installed, spec) == HookInstallState::installed());
    require(HookConfigMerger::install(*installed, spec).value() == *installed);
    require(wasInstalled == (*installed == text));

    require(HookConfigMerger::inspect(*removed, spec) == HookInstallState::notConfigured());
    require(HookConfigMerger::uninstall(*removed, spec).value() == *removed);

    const auto takenBack = HookConfigMerger::uninstall(*installed, spec).value();
    require(HookConfigMerger::inspect(takenBack, spec) == HookInstallState::notConfigured());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text{reinterpret_cast<const char*>(data), size};
    merge(text, HookInstallSpec::claudeCode("/x/tallowbrook-hook"));
    merge(text, HookInstallSpec::codex("/x/tallowbrook-hook"));
    return 0;
}
