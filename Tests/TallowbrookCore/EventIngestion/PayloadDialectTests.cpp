#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Normalizing.h"

namespace tallowbrook {
namespace {

// A payload of this event with every other member that any event of any dialect reads, the name of
// an event in another dialect among them.
std::string payloadNamed(PayloadSource source, std::string_view name) {
    const bool isNotify = source == PayloadSource::codexNotify;
    return (isNotify ? R"({"hook_event_name":"Stop","type":")"
                     : R"({"type":"agent-turn-complete","hook_event_name":")") +
           std::string{name} +
           R"(","session_id":"session","turn_id":"turn","thread-id":"thread",)"
           R"("turn-id":"notify-turn","cwd":"/proj","source":"startup","tool_name":"Bash",)"
           R"("notification_type":"idle_prompt","error":"server_error","reason":"other"})";
}

void expectSummaries(PayloadSource source, std::string_view sessionID, std::string_view turn,
                     std::initializer_list<std::pair<std::string_view, std::string_view>> rows) {
    for (const auto& [name, meaning] : rows) {
        const AgentEvent event = eventOf(payloadNamed(source, name), source);
        EXPECT_EQ(event.sessionID, sessionID) << name;
        EXPECT_EQ(event.cwd, "/proj") << name;
        EXPECT_EQ(summaryOf(event), std::string{name}.append(" ").append(meaning).append(turn));
    }
}

TEST(PayloadDialects, claudeCodeHookEvents) {
    expectSummaries(PayloadSource::claudeCodeHook, "session", "",
                    {{"SessionStart", "sessionStarted sessionSource=startup"},
                     {"UserPromptSubmit", "promptSubmitted"},
                     {"PermissionRequest", "attentionRequested permission toolName=Bash"},
                     {"Notification", "informational notificationType=idle_prompt"},
                     {"PostToolUse", "activity toolName=Bash"},
                     {"PostToolUseFailure", "activity toolName=Bash"},
                     {"Stop", "turnCompleted"},
                     {"StopFailure", "turnFailed errorType=server_error"},
                     {"SessionEnd", "sessionEnded endReason=other"},
                     {"CustomThing", "unrecognized"},
                     {"Interrupt", "unrecognized"},
                     {"agent-turn-complete", "unrecognized"},
                     {"stop", "unrecognized"},
                     {"Stop.", "unrecognized"}});
}

TEST(PayloadDialects, codexHookEvents) {
    expectSummaries(PayloadSource::codexHook, "session", " turn=turn",
                    {{"SessionStart", "sessionStarted sessionSource=startup"},
                     {"UserPromptSubmit", "promptSubmitted"},
                     {"PermissionRequest", "attentionRequested permission toolName=Bash"},
                     {"PostToolUse", "activity toolName=Bash"},
                     {"Stop", "turnCompleted"},
                     {"Interrupt", "turnInterrupted"},
                     {"SessionEnd", "sessionEnded endReason=other"},
                     {"Notification", "unrecognized"},
                     {"PostToolUseFailure", "unrecognized"},
                     {"StopFailure", "unrecognized"},
                     {"interrupt", "unrecognized"}});
}

TEST(PayloadDialects, codexNotifyEvents) {
    expectSummaries(PayloadSource::codexNotify, "thread", " turn=notify-turn",
                    {{"agent-turn-complete", "turnCompleted"},
                     {"Agent-Turn-Complete", "unrecognized"},
                     {"agent_turn_complete", "unrecognized"},
                     {"Stop", "unrecognized"}});
}

TEST(PayloadDialects, claudeCodeNotificationTypes) {
    for (const auto& [member, meaning] : {
             std::pair{R"(,"notification_type":"permission_prompt")",
                       "attentionRequested permission notificationType=permission_prompt"},
             std::pair{R"(,"notification_type":"elicitation_dialog")",
                       "attentionRequested input notificationType=elicitation_dialog"},
             std::pair{R"(,"notification_type":"elicitation_url_dialog")",
                       "attentionRequested input notificationType=elicitation_url_dialog"},
             std::pair{R"(,"notification_type":"Permission_Prompt")",
                       "informational notificationType=Permission_Prompt"},
             std::pair{R"(,"notification_type":"permission_prompt ")", "informational"},
             std::pair{R"(,"notification_type":["permission_prompt"])", "informational"},
             std::pair{R"(,"notification_type":null)", "informational"},
             std::pair{"", "informational"},
         })
        EXPECT_EQ(
            summaryOf(eventOf(R"({"hook_event_name":"Notification")" + std::string{member} + "}")),
            std::string{"Notification "} + meaning);
}

TEST(PayloadDialects, onlyANotificationAsksByItsType) {
    for (const char* name : {"Stop", "PostToolUse"})
        EXPECT_FALSE(eventOf(R"({"notification_type":"permission_prompt","hook_event_name":")" +
                             std::string{name} + "\"}")
                         .attention)
            << name;
}

TEST(PayloadDialects, anEventWithoutACleanNameIsUnknownButKeepsItsSession) {
    for (const PayloadSource source : allCases<PayloadSource>())
        for (const char* name : {"", "Stop ", "a b", "a/b", "Stop\\n", "caf\u00E9"}) {
            const AgentEvent event = eventOf(payloadNamed(source, name), source);
            EXPECT_EQ(event.eventType, "Unknown") << name;
            EXPECT_EQ(event.category, EventCategory::unrecognized) << name;
            EXPECT_EQ(event.detail, EventDetail{}) << name;
            EXPECT_TRUE(event.sessionID && event.cwd) << name;
        }
}

}  // namespace
}  // namespace tallowbrook
