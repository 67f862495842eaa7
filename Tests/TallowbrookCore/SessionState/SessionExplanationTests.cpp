#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>

#include "Support/SampleSnapshots.h"

namespace tallowbrook {
namespace {

constexpr Seconds staleAfter{600};

// Seconds from the sample time, as "[40]".
std::string bracketed(Instant instant) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(instant - sampleTime);
    return "[" + std::to_string(seconds.count()) + "]";
}

// A session of every field, in `status` since [40], last seen at [60].
SessionSnapshot sessionIn(SessionStatus status, EventCategory category) {
    SessionSnapshot session = fullSnapshot();
    session.status = status;
    session.statusCategory = category;
    session.attention.reset();
    session.statusEventType = "Event";
    session.sessionEnded = false;
    return session;
}

std::string explained(const SessionSnapshot& session) {
    return session.explanation(after(660), staleAfter, bracketed);
}

TEST(SessionExplanation, turnsStaleWithTheDisplayedStatus) {
    constexpr auto staleText =
        "No recent event since [60]. The agent may still be working, or it stopped without "
        "reporting (for example after an interrupt).";
    const auto session = sessionIn(SessionStatus::working, EventCategory::activity);
    EXPECT_NE(session.explanation(after(660), staleAfter, bracketed), staleText);
    EXPECT_EQ(session.explanation(after(660.000001), staleAfter, bracketed), staleText);
    EXPECT_EQ(explained(sessionIn(SessionStatus::stale, EventCategory::activity)), staleText);
}

TEST(SessionExplanation, ofEachStatusReadsLikeThis) {
    struct Row {
        SessionStatus status;
        const char* text;
        std::function<void(SessionSnapshot&)> change = [](SessionSnapshot&) {};
    };
    using enum SessionStatus;
    for (const auto& [status, text, change] : {
             Row{working, "Activity resumed at [40] after an attention request (Event)."},
             Row{needsAttention,
                 "The agent asked for your input at [40] (Event). Respond in Codex CLI.",
                 [](auto& session) { session.attention = AttentionKind::input; }},
             Row{needsAttention,
                 "A permission request for Bash was observed at [40] (Event). Approve or deny it "
                 "in Codex CLI; Tallowbrook never answers it.",
                 [](auto& session) { session.attention = AttentionKind::permission; }},
             Row{needsAttention,
                 "A permission request was observed at [40] (Event). Approve or deny it in Claude "
                 "Code; Tallowbrook never answers it.",
                 [](auto& session) {
                     session.key.provider = Provider::claudeCode;
                     session.statusDetail.toolName.reset();
                 }},
             Row{completed, "The last turn finished at [40] (Event). The session is still open."},
             Row{completed, "The session ended at [30] (reason: logout).",
                 [](auto& session) { session.sessionEnded = true; }},
             Row{completed, "The session ended at [40].",
                 [](auto& session) {
                     session.sessionEnded = true;
                     session.endedAt.reset();
                     session.endReason.reset();
                 }},
             Row{failed, "The last turn failed at [40] (server_error)."},
             Row{failed, "The last turn failed at [40].",
                 [](auto& session) { session.statusDetail.errorType.reset(); }},
             Row{interrupted, "The turn was interrupted at [40] (Event)."},
         }) {
        SessionSnapshot session = sessionIn(status, EventCategory::activity);
        change(session);
        EXPECT_EQ(explained(session), text);
    }
}

TEST(SessionExplanation, goesByTheCategoryWhereTheStatusAloneDoesNotTell) {
    for (const EventCategory category : allCases<EventCategory>()) {
        if (category != EventCategory::activity) {
            EXPECT_EQ(explained(sessionIn(SessionStatus::working, category)),
                      "A prompt was submitted at [40]. No completion event has been observed yet.");
        }
        if (category != EventCategory::sessionStarted) {
            EXPECT_EQ(explained(sessionIn(SessionStatus::unknown, category)),
                      "Session seen at [40], but no event has established its status yet.");
        }
    }
    auto session = sessionIn(SessionStatus::unknown, EventCategory::sessionStarted);
    EXPECT_EQ(explained(session),
              "Session seen at [40] (Event: startup). No prompt has been observed yet.");
    session.statusDetail.sessionSource.reset();
    EXPECT_EQ(explained(session), "Session seen at [40] (Event). No prompt has been observed yet.");
}

}  // namespace
}  // namespace tallowbrook
