// What a configuration file has to look like after an installation was taken back.
#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "Integrations/HookInstallSpec.h"
#include "Integrations/OrderedJSON.h"

namespace tallowbrook {

// A file without handlers of ours, after an installation and its removal: the same but for lists of
// events that were empty before the installation filled them, and for a "hooks" object that is
// empty without them.
inline JSONNode afterInstallAndUninstall(JSONNode root, const HookInstallSpec& spec) {
    auto& members = *root.objectMembers();
    const auto hooks = std::ranges::find(members, "hooks", &JSONMember::key);
    if (hooks == members.end() || spec.events.empty()) return root;
    auto& events = *hooks->value.objectMembers();
    std::erase_if(events, [&](const JSONMember& event) {
        const auto* groups = event.value.arrayElements();
        return groups->empty() && std::ranges::find(spec.events, event.key) != spec.events.end();
    });
    if (events.empty()) members.erase(hooks);
    return root;
}

}  // namespace tallowbrook
