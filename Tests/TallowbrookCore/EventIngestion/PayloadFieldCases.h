// Every field that any dialect reads, for tests of rules that hold for all of them.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Normalizing.h"

namespace tallowbrook {

// A JSON string with `text` as it stands between its quotes.
inline std::string jsonString(const std::string& text) { return '"' + text + '"'; }

struct PayloadFieldCase {
    PayloadSource source;
    std::string_view eventName;  // of an event that has the field
    std::string_view key;
    std::size_t limit;  // in bytes
    std::function<std::optional<std::string>(const AgentEvent&)> field;

    bool isPath() const { return key == "cwd"; }

    // What a message of a test calls it.
    std::string title() const {
        return std::string{rawValue(source)} + " " + std::string{eventName} + " " +
               std::string{key};
    }

    // A payload in which the field's member has this value, a JSON text.
    std::string payload(std::string_view value) const { return payloadOf(member(value)); }

    std::string member(std::string_view value) const {
        return "\"" + std::string{key} + "\":" + std::string{value};
    }

    // A payload of the event that has the field, with these members.
    std::string payloadOf(std::string_view members) const {
        const bool isNotify = source == PayloadSource::codexNotify;
        const std::string nameKey = isNotify ? "type" : "hook_event_name";
        std::string text = "{";
        if (key != nameKey) text += "\"" + nameKey + "\":\"" + std::string{eventName} + "\",";
        return text.append(members) + "}";
    }

    // What the normalizer made of such a payload.
    std::optional<std::string> read(std::string_view payload) const {
        return field(eventOf(payload, source));
    }
};

inline std::vector<PayloadFieldCase> allPayloadFields() {
    const auto session = [](const AgentEvent& event) { return event.sessionID; };
    const auto turn = [](const AgentEvent& event) { return event.turnID; };
    const auto cwd = [](const AgentEvent& event) { return event.cwd; };
    const auto tool = [](const AgentEvent& event) { return event.detail.toolName; };
    const auto start = [](const AgentEvent& event) { return event.detail.sessionSource; };
    const auto end = [](const AgentEvent& event) { return event.detail.endReason; };
    const auto error = [](const AgentEvent& event) { return event.detail.errorType; };
    const auto notification = [](const AgentEvent& event) { return event.detail.notificationType; };
    const auto name = [](const AgentEvent& event) {
        return event.eventType == "Unknown" ? std::nullopt : std::optional{event.eventType};
    };
    using enum PayloadSource;
    return {
        {claudeCodeHook, "Stop", "session_id", 128, session},
        {claudeCodeHook, "Stop", "cwd", 1024, cwd},
        {claudeCodeHook, "", "hook_event_name", 64, name},
        {claudeCodeHook, "SessionStart", "source", 64, start},
        {claudeCodeHook, "PermissionRequest", "tool_name", 128, tool},
        {claudeCodeHook, "PostToolUse", "tool_name", 128, tool},
        {claudeCodeHook, "PostToolUseFailure", "tool_name", 128, tool},
        {claudeCodeHook, "Notification", "notification_type", 64, notification},
        {claudeCodeHook, "StopFailure", "error", 64, error},
        {claudeCodeHook, "SessionEnd", "reason", 64, end},
        {codexHook, "Stop", "session_id", 128, session},
        {codexHook, "Stop", "turn_id", 128, turn},
        {codexHook, "Stop", "cwd", 1024, cwd},
        {codexHook, "", "hook_event_name", 64, name},
        {codexHook, "SessionStart", "source", 64, start},
        {codexHook, "PermissionRequest", "tool_name", 128, tool},
        {codexHook, "PostToolUse", "tool_name", 128, tool},
        {codexHook, "SessionEnd", "reason", 64, end},
        {codexNotify, "agent-turn-complete", "thread-id", 128, session},
        {codexNotify, "agent-turn-complete", "turn-id", 128, turn},
        {codexNotify, "agent-turn-complete", "cwd", 1024, cwd},
        {codexNotify, "", "type", 64, name},
    };
}

}  // namespace tallowbrook
