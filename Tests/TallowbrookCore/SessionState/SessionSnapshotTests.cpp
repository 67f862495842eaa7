#include "SessionState/SessionSnapshot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "Support/SampleSnapshots.h"

namespace tallowbrook {
namespace {

constexpr Seconds staleAfter{600};

TEST(SessionKey, storageIDJoinsAgentAndSession) {
    EXPECT_EQ((SessionKey{Provider::claudeCode, "s1"}.storageID()), "claudeCode|s1");
    EXPECT_EQ((SessionKey{Provider::codexCLI, "abc"}.storageID()), "codexCLI|abc");
    EXPECT_EQ((SessionKey{Provider::codexCLI, ""}.storageID()), "codexCLI|");
    EXPECT_EQ(fullSnapshot().id(), "codexCLI|session-1");
}

TEST(SessionKey, hashesByAgentAndSession) {
    const std::hash<SessionKey> hash;
    EXPECT_EQ(hash({Provider::claudeCode, "a"}), hash({Provider::claudeCode, "a"}));
    EXPECT_NE(hash({Provider::claudeCode, "a"}), hash({Provider::codexCLI, "a"}));
    EXPECT_NE(hash({Provider::claudeCode, "a"}), hash({Provider::claudeCode, "b"}));
}

TEST(SessionKey, recognizesTheSessionsOfTheSetupByTheirPrefix) {
    const auto isSetupCheck = [](const char* id) {
        return SessionKey{Provider::codexCLI, id}.isSetupCheck();
    };
    EXPECT_TRUE(isSetupCheck("tallowbrook-setup-check-1"));
    EXPECT_TRUE(isSetupCheck("tallowbrook-setup-check-"));
    EXPECT_FALSE(isSetupCheck("tallowbrook-setup-check"));
    EXPECT_FALSE(isSetupCheck("x-tallowbrook-setup-check-1"));
    EXPECT_FALSE(isSetupCheck("Tallowbrook-setup-check-1"));
}

TEST(SessionStatus, sortsWhatWaitsForTheUserFirst) {
    auto statuses = allCases<SessionStatus>();
    std::ranges::sort(statuses, {}, sortRank);
    using enum SessionStatus;
    EXPECT_THAT(statuses, testing::ElementsAre(needsAttention, failed, working, stale, interrupted,
                                               unknown, completed));
}

TEST(SessionSnapshot, beginsFromItsFirstEventUncountedAndUnapplied) {
    AgentEvent event = fullEvent();
    event.category = EventCategory::turnCompleted;
    SessionSnapshot expected;
    expected.key = {Provider::codexCLI, "session-1"};
    expected.origin = EventOrigin::demo;
    expected.status = SessionStatus::unknown;
    expected.statusEventType = "PermissionRequest";
    expected.statusCategory = EventCategory::turnCompleted;
    expected.statusDetail = event.detail;
    expected.statusSince = expected.firstSeenAt = expected.lastSeenAt = sampleTime;
    expected.lastAppliedAt = distantPast;
    expected.lastEventType = "PermissionRequest";
    expected.cwd = "/Users/x/proj";
    expected.tty = "ttys003";
    EXPECT_EQ(SessionSnapshot::initial({Provider::codexCLI, "session-1"}, event), expected);
}

TEST(SessionSnapshot, isLabelledByTheLastPartOfItsWorkingDirectory) {
    struct Row {
        const char* why;
        std::optional<std::string> cwd;
        const char* label;
    };
    for (const auto& [why, cwd, label] : {
             Row{"absent", std::nullopt, "Project unavailable"},
             Row{"empty", "", "Project unavailable"},
             Row{"a project", "/Users/x/checkout-api", "checkout-api"},
             Row{"a slash at the end does not count", "/a/b/", "b"},
             Row{"nor do several", "/a/b///", "b"},
             Row{"below the root", "/a", "a"},
             Row{"the root is its own label", "/", "/"},
             Row{"nothing but slashes has no last part", "///", "///"},
             Row{"two slashes inside", "/a//b", "b"},
             Row{"no slash at all", "proj", "proj"},
             Row{"blanks and dots are part of the name", "/a/my proj.v2", "my proj.v2"},
             Row{"a name beyond ASCII", "/a/Übung", "Übung"},
             Row{"dots alone are a name too", "/a/..", ".."},
         }) {
        SessionSnapshot session = minimalSnapshot();
        session.cwd = cwd;
        EXPECT_EQ(session.projectLabel(), label) << why;
    }
}

TEST(SessionSnapshot, showsAWorkingSessionAsStaleOnlyBeyondTheLimit) {
    for (const SessionStatus status : allCases<SessionStatus>()) {
        SessionSnapshot session = minimalSnapshot();
        session.status = status;
        session.statusSince = after(-5000);
        const auto late = status == SessionStatus::working ? SessionStatus::stale : status;
        EXPECT_EQ(session.displayStatus(after(-1), staleAfter), status);
        EXPECT_EQ(session.displayStatus(after(600), staleAfter), status);
        EXPECT_EQ(session.displayStatus(after(600.000001), staleAfter), late);
        EXPECT_EQ(session.displayStatus(after(601), staleAfter), late);
        EXPECT_EQ(session.displayStatus(after(0.1), Seconds{0.1}), status);
        EXPECT_EQ(session.displayStatus(after(0.100001), Seconds{0.1}), late);
        EXPECT_EQ(session.displayStatus(after(0), Seconds{0}), status);
    }
}

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
