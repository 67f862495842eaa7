#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Normalizing.h"

namespace tallowbrook {
namespace {

using enum EventCategory;
using enum AttentionKind;

// Every member that any event of any dialect reads, but for the names of the event.
constexpr std::string_view members =
    R"("session_id":"session","turn_id":"turn","thread-id":"thread","turn-id":"notify-turn",)"
    R"("cwd":"/proj","source":"startup","tool_name":"Bash","notification_type":"idle_prompt",)"
    R"("error":"server_error","reason":"other")";

std::string payloadNamed(std::string_view key, std::string_view name) {
    return "{\"" + std::string{key} + "\":\"" + std::string{name} + "\"," + std::string{members} +
           "}";
}

using DetailField = std::optional<std::string> EventDetail::*;

struct Row {
    std::string_view name;
    EventCategory category;
    std::optional<AttentionKind> attention = std::nullopt;
    DetailField detail = nullptr;
    std::string_view detailText = "";
};

AgentEvent expectedEvent(PayloadSource source, const Row& row) {
    AgentEvent event = unknownEvent(source);
    event.eventType = row.name;
    event.category = row.category;
    event.attention = row.attention;
    if (row.detail != nullptr) event.detail.*row.detail = row.detailText;
    return event;
}

TEST(PayloadDialects, claudeCodeHookEvents) {
    constexpr auto source = PayloadSource::claudeCodeHook;
    for (const Row& row : {
             Row{"SessionStart", sessionStarted, {}, &EventDetail::sessionSource, "startup"},
             Row{"UserPromptSubmit", promptSubmitted},
             Row{"PermissionRequest", attentionRequested, permission, &EventDetail::toolName,
                 "Bash"},
             Row{"Notification", informational, {}, &EventDetail::notificationType, "idle_prompt"},
             Row{"PostToolUse", activity, {}, &EventDetail::toolName, "Bash"},
             Row{"PostToolUseFailure", activity, {}, &EventDetail::toolName, "Bash"},
             Row{"Stop", turnCompleted},
             Row{"StopFailure", turnFailed, {}, &EventDetail::errorType, "server_error"},
             Row{"SessionEnd", sessionEnded, {}, &EventDetail::endReason, "other"},
             Row{"CustomThing", unrecognized},
             Row{"Interrupt", unrecognized},
             Row{"PreToolUse", unrecognized},
             Row{"SubagentStop", unrecognized},
             Row{"agent-turn-complete", unrecognized},
             Row{"stop", unrecognized},
             Row{"STOP", unrecognized},
             Row{"Stop.", unrecognized},
             Row{"notification", unrecognized},
             Row{"Unknown", unrecognized},
         }) {
        AgentEvent expected = expectedEvent(source, row);
        expected.sessionID = "session";
        expected.cwd = "/proj";
        EXPECT_EQ(eventOf(payloadNamed("hook_event_name", row.name), source), expected) << row.name;
    }
}

TEST(PayloadDialects, claudeCodeNotificationTypes) {
    struct Notification {
        const char* member;
        std::optional<std::string> type;
        EventCategory category;
        std::optional<AttentionKind> attention;
    };
    const std::string longest(64, 'a');
    const std::string tooLong = R"(,"notification_type":")" + longest + R"(a")";
    const std::string justRight = R"(,"notification_type":")" + longest + R"(")";
    for (const auto& [member, type, category, attention] : {
             Notification{R"(,"notification_type":"permission_prompt")", "permission_prompt",
                          attentionRequested, permission},
             Notification{R"(,"notification_type":"elicitation_dialog")", "elicitation_dialog",
                          attentionRequested, input},
             Notification{R"(,"notification_type":"elicitation_url_dialog")",
                          "elicitation_url_dialog", attentionRequested, input},
             Notification{
                 R"(,"notification_type":"idle_prompt")", "idle_prompt", informational, {}},
             Notification{R"(,"notification_type":"elicitation_response")",
                          "elicitation_response",
                          informational,
                          {}},
             Notification{R"(,"notification_type":"Permission_Prompt")",
                          "Permission_Prompt",
                          informational,
                          {}},
             Notification{R"(,"notification_type":"permission_prompt_2")",
                          "permission_prompt_2",
                          informational,
                          {}},
             Notification{justRight.c_str(), longest, informational, {}},
             Notification{tooLong.c_str(), {}, informational, {}},
             Notification{R"(,"notification_type":"permission_prompt ")", {}, informational, {}},
             Notification{R"(,"notification_type":"")", {}, informational, {}},
             Notification{R"(,"notification_type":1)", {}, informational, {}},
             Notification{R"(,"notification_type":["permission_prompt"])", {}, informational, {}},
             Notification{R"(,"notification_type":null)", {}, informational, {}},
             Notification{"", {}, informational, {}},
         }) {
        AgentEvent expected = unknownEvent();
        expected.eventType = "Notification";
        expected.category = category;
        expected.attention = attention;
        expected.detail.notificationType = type;
        EXPECT_EQ(eventOf(R"({"hook_event_name":"Notification")" + std::string{member} + "}"),
                  expected)
            << member;
    }
}

TEST(PayloadDialects, onlyANotificationAsksByItsType) {
    for (const char* name : {"Stop", "PostToolUse", "SessionStart", "CustomThing"}) {
        const AgentEvent event =
            eventOf(R"({"notification_type":"permission_prompt","hook_event_name":")" +
                    std::string{name} + "\"}");
        EXPECT_FALSE(event.attention) << name;
        EXPECT_NE(event.category, attentionRequested) << name;
    }
}

TEST(PayloadDialects, codexHookEvents) {
    constexpr auto source = PayloadSource::codexHook;
    for (const Row& row : {
             Row{"SessionStart", sessionStarted, {}, &EventDetail::sessionSource, "startup"},
             Row{"UserPromptSubmit", promptSubmitted},
             Row{"PermissionRequest", attentionRequested, permission, &EventDetail::toolName,
                 "Bash"},
             Row{"PostToolUse", activity, {}, &EventDetail::toolName, "Bash"},
             Row{"Stop", turnCompleted},
             Row{"Interrupt", turnInterrupted},
             Row{"SessionEnd", sessionEnded, {}, &EventDetail::endReason, "other"},
             Row{"Notification", unrecognized},
             Row{"PostToolUseFailure", unrecognized},
             Row{"StopFailure", unrecognized},
             Row{"CustomThing", unrecognized},
             Row{"agent-turn-complete", unrecognized},
             Row{"interrupt", unrecognized},
         }) {
        AgentEvent expected = expectedEvent(source, row);
        expected.sessionID = "session";
        expected.turnID = "turn";
        expected.cwd = "/proj";
        EXPECT_EQ(eventOf(payloadNamed("hook_event_name", row.name), source), expected) << row.name;
    }
}

TEST(PayloadDialects, codexNotifyEvents) {
    constexpr auto source = PayloadSource::codexNotify;
    for (const Row& row : {
             Row{"agent-turn-complete", turnCompleted},
             Row{"agent-turn-started", unrecognized},
             Row{"Agent-Turn-Complete", unrecognized},
             Row{"agent_turn_complete", unrecognized},
             Row{"Stop", unrecognized},
             Row{"SessionStart", unrecognized},
             Row{"PermissionRequest", unrecognized},
         }) {
        AgentEvent expected = expectedEvent(source, row);
        expected.sessionID = "thread";
        expected.turnID = "notify-turn";
        expected.cwd = "/proj";
        EXPECT_EQ(eventOf(payloadNamed("type", row.name), source), expected) << row.name;
    }
}

TEST(PayloadDialects, eachReadsOnlyItsOwnNameOfTheEvent) {
    AgentEvent expected = unknownEvent();
    expected.sessionID = "session";
    expected.cwd = "/proj";
    EXPECT_EQ(eventOf(payloadNamed("type", "agent-turn-complete")), expected);

    expected = unknownEvent(PayloadSource::codexNotify);
    expected.sessionID = "thread";
    expected.turnID = "notify-turn";
    expected.cwd = "/proj";
    EXPECT_EQ(eventOf(payloadNamed("hook_event_name", "Stop"), PayloadSource::codexNotify),
              expected);
}

TEST(PayloadDialects, aNameThatIsNotCleanLeavesTheEventUnknownButItsIdsKept) {
    for (const char* name :
         {"Stop ", " Stop", "", "Stop\\n", "St/op", "Stop!", "\\u0000", "Caf\u00E9", "\\ud83d"})
        for (const PayloadSource source : {PayloadSource::claudeCodeHook, PayloadSource::codexHook,
                                           PayloadSource::codexNotify}) {
            const bool isNotify = source == PayloadSource::codexNotify;
            AgentEvent expected = unknownEvent(source);
            expected.sessionID = isNotify ? "thread" : "session";
            expected.cwd = "/proj";
            if (source == PayloadSource::codexHook) expected.turnID = "turn";
            if (isNotify) expected.turnID = "notify-turn";
            const std::string key = isNotify ? "type" : "hook_event_name";
            EXPECT_EQ(eventOf(payloadNamed(key, name), source), expected)
                << rawValue(source) << " '" << name << "'";
        }
}

}  // namespace
}  // namespace tallowbrook
