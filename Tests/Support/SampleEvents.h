// Events for tests to write, read and compare.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "Domain/AgentEvent.h"
#include "Domain/EventCoding.h"

namespace tallowbrook {

inline UUID sampleID(std::string_view text = "0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D") {
    return UUIDText::parse(text).value();
}

// 2026-11-15T03:30:55.123Z
inline constexpr Instant sampleTime{std::chrono::milliseconds{1794713455123}};

// Nothing that may be absent is there.
inline AgentEvent minimalEvent() {
    AgentEvent event;
    event.id = sampleID();
    event.eventType = "Stop";
    event.category = EventCategory::turnCompleted;
    event.observedAt = sampleTime;
    event.adapterVersion = "0.1.0";
    return event;
}

// Everything that may be absent is there.
inline AgentEvent fullEvent() {
    AgentEvent event = minimalEvent();
    event.provider = Provider::codexCLI;
    event.channel = EventChannel::notify;
    event.origin = EventOrigin::demo;
    event.eventType = "PermissionRequest";
    event.category = EventCategory::attentionRequested;
    event.attention = AttentionKind::permission;
    event.sessionID = "session-1";
    event.turnID = "turn:1";
    event.cwd = "/Users/x/proj";
    event.tty = "ttys003";
    event.detail.notificationType = "permission_prompt";
    event.detail.toolName = "Bash";
    event.detail.sessionSource = "startup";
    event.detail.endReason = "other";
    event.detail.errorType = "server_error";
    return event;
}

// An event whose line takes `length` bytes, its line feed counted.
inline AgentEvent eventWithLineOf(std::size_t length) {
    AgentEvent event = minimalEvent();
    event.eventType.clear();
    event.eventType.assign(length - EventCoding::encodeLine(event).size(), 'x');
    return event;
}

}  // namespace tallowbrook
