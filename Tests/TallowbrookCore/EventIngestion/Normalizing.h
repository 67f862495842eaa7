// The normalizer as its tests call it, with the time and the id of the sample events.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "EventIngestion/PayloadNormalizer.h"
#include "Support/SampleEvents.h"

namespace tallowbrook {

inline std::expected<AgentEvent, NormalizationError> normalize(
    std::string_view payload, PayloadSource source = PayloadSource::claudeCodeHook) {
    return PayloadNormalizer::normalize(payload, source, EventOrigin::live, sampleTime, sampleID());
}

// "event", or the error's diagnostic code.
inline std::string outcomeOf(std::string_view payload,
                             PayloadSource source = PayloadSource::claudeCodeHook) {
    const auto event = normalize(payload, source);
    return event ? "event" : event.error().diagnosticCode();
}

// What a payload leads to that holds nothing of use.
inline AgentEvent unknownEvent(PayloadSource source = PayloadSource::claudeCodeHook) {
    AgentEvent event;
    event.id = sampleID();
    event.provider = provider(source);
    event.channel = channel(source);
    event.eventType = "Unknown";
    event.observedAt = sampleTime;
    event.adapterVersion = "0.1.0";
    return event;
}

// The event of a payload that has to lead to one.
inline AgentEvent eventOf(std::string_view payload,
                          PayloadSource source = PayloadSource::claudeCodeHook) {
    const auto event = normalize(payload, source);
    if (!event) ADD_FAILURE() << event.error().diagnosticCode() << ": " << payload.substr(0, 200);
    return event ? *event : unknownEvent(source);
}

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
