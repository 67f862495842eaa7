#include "Setup/SetupReversal.h"

#include <algorithm>

#include "Integrations/HookConfigMerger.h"
#include "Setup/LayoutPreservingEdit.h"

namespace tallowbrook::host {
namespace {

bool isWithoutOurs(const std::string& text, const HookInstallSpec& spec) {
    const auto rest = HookConfigMerger::uninstall(text, spec);
    return rest && *rest == text;
}

bool becomes(const std::string& text, const std::string& original, const HookInstallSpec& spec) {
    const auto merged = HookConfigMerger::install(original, spec);
    return merged && inLayoutOf(original, *merged) == text;
}

}  // namespace

std::optional<std::string> textBeforeSetup(const std::string& text,
                                           const std::vector<std::string>& candidates,
                                           const HookInstallSpec& spec) {
    const auto before = std::ranges::find_if(candidates, [&](const std::string& candidate) {
        return isWithoutOurs(candidate, spec) && becomes(text, candidate, spec);
    });
    return before == candidates.end() ? std::nullopt : std::optional{*before};
}

ConfigChangePlan givingBack(ConfigChangePlan removal, const std::vector<std::string>& candidates,
                            const HookInstallSpec& spec) {
    if (removal.isNoOp() || !removal.originalText || !removal.proposedText) return removal;
    auto before = textBeforeSetup(*removal.originalText, candidates, spec);
    return before ? proposing(std::move(removal), std::move(*before)) : removal;
}

}  // namespace tallowbrook::host
