#include "Integrations/HookConfigStructure.h"

#include <string>
#include <utility>

namespace tallowbrook {
namespace {

using Members = std::vector<JSONMember>;
using Nodes = std::vector<JSONNode>;

template <typename Value>
using Result = std::expected<Value, HookConfigError>;

auto unexpected(std::string path, std::string expectedKind) {
    return std::unexpected(
        HookConfigError::unexpectedStructure(std::move(path), std::move(expectedKind)));
}

std::string eventPath(const JSONMember& event) { return "hooks." + event.key; }

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \n\r\t") == std::string_view::npos;
}

}  // namespace

// An editor may leave an empty file behind, which no JSON parser would take.
Result<Members> HookConfigStructure::parseRoot(std::string_view text) {
    if (isBlank(text)) return Members{};
    auto root = OrderedJSON::parse(text);
    if (!root) return std::unexpected(HookConfigError::malformedJSON(root.error()));
    auto* members = root->objectMembers();
    if (!members) return std::unexpected(HookConfigError::rootNotObject());
    return std::move(*members);
}

Result<Members*> HookConfigStructure::eventsOf(JSONNode& hooks) {
    auto* events = hooks.objectMembers();
    if (!events) return unexpected("hooks", "object");
    return events;
}

Result<void> HookConfigStructure::checkEvent(const JSONMember& event) {
    if (event.value.arrayElements()) return {};
    return unexpected(eventPath(event), "array");
}

Result<void> HookConfigStructure::checkGroups(const JSONMember& event) {
    for (const auto& group : groupsOf(event)) {
        const auto* members = group.objectMembers();
        if (!members) return unexpected(eventPath(event) + "[]", "object");
        const auto* hooks = value(*members, "hooks");
        if (hooks && !hooks->arrayElements())
            return unexpected(eventPath(event) + "[].hooks", "array");
    }
    return {};
}

const Nodes& HookConfigStructure::groupsOf(const JSONMember& event) {
    return *event.value.arrayElements();
}

Nodes& HookConfigStructure::groupsOf(JSONMember& event) { return *event.value.arrayElements(); }

const Nodes* HookConfigStructure::handlersOf(const JSONNode& group) {
    const auto* hooks = value(*group.objectMembers(), "hooks");
    return hooks ? hooks->arrayElements() : nullptr;
}

Nodes* HookConfigStructure::handlersOf(JSONNode& group) {
    return const_cast<Nodes*>(handlersOf(std::as_const(group)));
}

}  // namespace tallowbrook
