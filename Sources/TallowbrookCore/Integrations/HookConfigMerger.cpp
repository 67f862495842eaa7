#include "Integrations/HookConfigMerger.h"

#include <algorithm>
#include <set>
#include <utility>

#include "Integrations/HookConfigStructure.h"
#include "Integrations/HookHandler.h"

namespace tallowbrook {
namespace {

using namespace HookConfigStructure;
using namespace HookHandler;

using Members = std::vector<JSONMember>;
using Nodes = std::vector<JSONNode>;

template <typename Value>
using Result = std::expected<Value, HookConfigError>;

// An installation leaves exact handlers where the user has put them.
enum class Removal { staleOnly, allOfOurs };

// Of several surprises the first in the file is told.
Result<void> checkStructure(const Members& events) {
    for (const auto& event : events) {
        if (const auto checked = checkEvent(event); !checked) return checked;
        if (const auto checked = checkGroups(event); !checked) return checked;
    }
    return {};
}

// Gives whether anything was removed. The events must have passed `checkStructure`. A group or
// event that this empties goes too; one that was empty before stays. Whole pieces go first and each
// list is closed up once: a file may hold so many handlers that closing it up for each of them
// takes minutes.
bool removeHandlers(Members& events, const HookInstallSpec& spec, Removal removal) {
    const auto isUnwanted = [&](const JSONNode& handler) {
        return isOurs(handler) && (removal == Removal::allOfOurs || !isExact(handler, spec));
    };
    const auto isEmptiedGroup = [&](const JSONNode& group) {
        const auto* handlers = handlersOf(group);
        return handlers && !handlers->empty() && std::ranges::all_of(*handlers, isUnwanted);
    };
    const auto isEmptiedEvent = [&](const JSONMember& event) {
        const auto& groups = groupsOf(event);
        return !groups.empty() && std::ranges::all_of(groups, isEmptiedGroup);
    };
    auto removed = std::erase_if(events, isEmptiedEvent);
    for (auto& event : events) {
        auto& groups = groupsOf(event);
        removed += std::erase_if(groups, isEmptiedGroup);
        for (auto& group : groups)
            if (auto* handlers = handlersOf(group)) removed += std::erase_if(*handlers, isUnwanted);
    }
    return removed > 0;
}

struct Findings {
    std::set<std::string> coveredEvents;  // those with an exact handler
    int staleHandlers = 0;
};

// The events must have passed both checks.
Findings search(const Members& events, const HookInstallSpec& spec) {
    Findings findings;
    for (const auto& event : events) {
        for (const auto& group : groupsOf(event)) {
            const auto* handlers = handlersOf(group);
            if (!handlers) continue;
            for (const auto& handler : *handlers) {
                if (isExact(handler, spec))
                    findings.coveredEvents.insert(event.key);
                else if (isOurs(handler))
                    ++findings.staleHandlers;
            }
        }
    }
    return findings;
}

HookInstallState stateOf(const Findings& findings, const HookInstallSpec& spec) {
    if (findings.staleHandlers > 0) return HookInstallState::needsRepair(findings.staleHandlers);
    auto missing = spec.events;
    std::erase_if(missing,
                  [&](const auto& event) { return findings.coveredEvents.contains(event); });
    if (missing.empty()) return HookInstallState::installed();
    if (missing.size() == spec.events.size()) return HookInstallState::notConfigured();
    return HookInstallState::partial(std::move(missing));
}

// The groups must have passed `checkGroups`.
bool hasExactHandler(const JSONMember& event, const HookInstallSpec& spec) {
    const auto isWanted = [&](const JSONNode& handler) { return isExact(handler, spec); };
    return std::ranges::any_of(groupsOf(event), [&](const JSONNode& group) {
        const auto* handlers = handlersOf(group);
        return handlers && std::ranges::any_of(*handlers, isWanted);
    });
}

// Gives whether anything was added. The events must have passed `checkStructure`.
bool addMissingHandlers(Members& events, const HookInstallSpec& spec) {
    bool added = false;
    for (const auto& name : spec.events) {
        const auto event = std::ranges::find(events, name, &JSONMember::key);
        if (event == events.end()) {
            Nodes groups;
            groups.push_back(newGroup(name, spec));
            events.push_back({name, std::nullopt, JSONNode::array(std::move(groups))});
        } else {
            if (hasExactHandler(*event, spec)) continue;
            groupsOf(*event).push_back(newGroup(name, spec));
        }
        added = true;
    }
    return added;
}

// The file's own way with a line feed at its end is kept.
std::string render(Members root, std::string_view original) {
    auto text = OrderedJSON::serialize(JSONNode::object(std::move(root)), "  ");
    if (original.empty() || original.ends_with('\n')) text += '\n';
    return text;
}

}  // namespace

HookInstallState HookInstallState::partial(std::vector<std::string> missingEvents) {
    return {Partial{std::move(missingEvents)}};
}

Result<HookInstallState> HookConfigMerger::inspect(const std::optional<std::string>& text,
                                                   const HookInstallSpec& spec) {
    auto root = parseRoot(text.value_or(""));
    if (!root) return std::unexpected(root.error());
    auto* hooks = value(*root, "hooks");
    if (!hooks) return HookInstallState::notConfigured();
    const auto events = eventsOf(*hooks);
    if (!events) return std::unexpected(events.error());
    // Every event before any group: of several surprises the outermost is told.
    for (const auto& event : **events)
        if (const auto checked = checkEvent(event); !checked)
            return std::unexpected(checked.error());

    for (const auto& event : **events)
        if (const auto checked = checkGroups(event); !checked)
            return std::unexpected(checked.error());
    return stateOf(search(**events, spec), spec);
}

Result<std::string> HookConfigMerger::install(const std::optional<std::string>& text,
                                              const HookInstallSpec& spec) {
    std::string original = text.value_or("");
    auto root = parseRoot(original);
    if (!root) return std::unexpected(root.error());

    auto* hooks = value(*root, "hooks");
    Members newEvents;
    Members* events = &newEvents;
    if (hooks) {
        const auto found = eventsOf(*hooks);
        if (!found) return std::unexpected(found.error());
        events = *found;
    }
    if (const auto checked = checkStructure(*events); !checked)
        return std::unexpected(checked.error());
    const bool removed = removeHandlers(*events, spec, Removal::staleOnly);
    const bool added = addMissingHandlers(*events, spec);
    if (!removed && !added) return original;

    // A "hooks" object of the user has been changed in place.
    if (!hooks) root->push_back({"hooks", std::nullopt, JSONNode::object(std::move(newEvents))});
    return render(std::move(*root), original);
}

Result<std::optional<std::string>> HookConfigMerger::uninstall(
    const std::optional<std::string>& text, const HookInstallSpec& spec) {
    if (!text) return text;
    auto root = parseRoot(*text);
    if (!root) return std::unexpected(root.error());
    const auto hooks = std::ranges::find(*root, "hooks", &JSONMember::key);
    if (hooks == root->end()) return text;

    const auto events = eventsOf(hooks->value);
    if (!events) return std::unexpected(events.error());
    if (const auto checked = checkStructure(**events); !checked)
        return std::unexpected(checked.error());
    if (!removeHandlers(**events, spec, Removal::allOfOurs)) return text;
    // Most files had no "hooks" before the installation.
    if ((*events)->empty()) root->erase(hooks);
    return render(std::move(*root), *text);
}

}  // namespace tallowbrook
