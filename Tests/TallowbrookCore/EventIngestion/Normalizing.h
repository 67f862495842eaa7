// The normalizer as its tests call it, with the time and the id of the sample events.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "EventIngestion/PayloadNormalizer.h"
#include "Support/EventSummary.h"
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

}  // namespace tallowbrook
