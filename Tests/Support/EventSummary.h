// What an event says, as one line for comparing.
#pragma once

#include <optional>
#include <string>

#include "Domain/AgentEvent.h"

namespace tallowbrook {

// The event's name and what it was taken for, such as "SessionEnd sessionEnded endReason=other":
// the category, the attention, the fields of the detail and the turn, as far as they are there.
inline std::string summaryOf(const AgentEvent& event) {
    std::string text = event.eventType + " " + std::string{rawValue(event.category)};
    if (event.attention) text.append(" ").append(rawValue(*event.attention));
    const auto add = [&](const char* name, const std::optional<std::string>& value) {
        if (value) text.append(" ").append(name).append("=").append(*value);
    };
    add("notificationType", event.detail.notificationType);
    add("toolName", event.detail.toolName);
    add("sessionSource", event.detail.sessionSource);
    add("endReason", event.detail.endReason);
    add("errorType", event.detail.errorType);
    add("turn", event.turnID);
    return text;
}

}  // namespace tallowbrook
