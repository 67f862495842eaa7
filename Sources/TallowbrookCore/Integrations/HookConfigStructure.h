// The shape that an agent's configuration file must have for a merge, and the way to its parts.
//
// The file is JSON (RFC 8259). Its member "hooks" maps an event name to an array of groups, whose
// own member "hooks" is an array of handlers. The two checks come first: the accessors below them
// take for granted what a check has found.
//
// Pure functions; safe from any thread.
#pragma once

#include <expected>
#include <string_view>
#include <vector>

#include "Integrations/HookConfigError.h"
#include "Integrations/JSONNode.h"

namespace tallowbrook::HookConfigStructure {

// The members of the top-level object. A text of white space alone has none.
[[nodiscard]] std::expected<std::vector<JSONMember>, HookConfigError> parseRoot(
    std::string_view text);

// The members of a "hooks" value, one an event. The pointer is never null.
[[nodiscard]] std::expected<std::vector<JSONMember>*, HookConfigError> eventsOf(JSONNode& hooks);

// Whether the event holds an array.
[[nodiscard]] std::expected<void, HookConfigError> checkEvent(const JSONMember& event);

// Whether each group is an object and its handlers, where it has any, are an array. The event must
// have passed `checkEvent`.
[[nodiscard]] std::expected<void, HookConfigError> checkGroups(const JSONMember& event);

// The event must have passed `checkEvent`.
const std::vector<JSONNode>& groupsOf(const JSONMember& event);
std::vector<JSONNode>& groupsOf(JSONMember& event);

// Null where the group has no "hooks" member. Its event must have passed `checkGroups`.
const std::vector<JSONNode>* handlersOf(const JSONNode& group);
std::vector<JSONNode>* handlersOf(JSONNode& group);

}  // namespace tallowbrook::HookConfigStructure
