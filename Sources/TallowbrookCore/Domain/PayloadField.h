// The members of an agent's payload that any of its dialects gives a meaning to.
#pragma once

#include <array>
#include <string_view>
#include <utility>

#include "Domain/EnumNames.h"

namespace tallowbrook {

enum class PayloadField {
    sessionID,
    turnID,
    cwd,
    hookEventName,
    source,
    toolName,
    notificationType,
    error,
    reason,
    notifyThreadID,
    notifyTurnID,
    notifyType,
};
inline constexpr std::array payloadFieldNames{
    std::pair{PayloadField::sessionID, std::string_view{"session_id"}},
    std::pair{PayloadField::turnID, std::string_view{"turn_id"}},
    std::pair{PayloadField::cwd, std::string_view{"cwd"}},
    std::pair{PayloadField::hookEventName, std::string_view{"hook_event_name"}},
    std::pair{PayloadField::source, std::string_view{"source"}},
    std::pair{PayloadField::toolName, std::string_view{"tool_name"}},
    std::pair{PayloadField::notificationType, std::string_view{"notification_type"}},
    std::pair{PayloadField::error, std::string_view{"error"}},
    std::pair{PayloadField::reason, std::string_view{"reason"}},
    std::pair{PayloadField::notifyThreadID, std::string_view{"thread-id"}},
    std::pair{PayloadField::notifyTurnID, std::string_view{"turn-id"}},
    std::pair{PayloadField::notifyType, std::string_view{"type"}},
};
constexpr const auto& namesOf(PayloadField) { return payloadFieldNames; }

}  // namespace tallowbrook
