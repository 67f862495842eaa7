#include "SessionState/SessionSnapshot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <unordered_set>
#include <vector>

#include "Support/SampleSnapshots.h"

namespace tallowbrook {
namespace {

using testing::ElementsAre;

constexpr Seconds staleAfter{600};

TEST(SessionKey, storageIDJoinsAgentAndSession) {
    EXPECT_EQ((SessionKey{Provider::claudeCode, "s1"}.storageID()), "claudeCode|s1");
    EXPECT_EQ((SessionKey{Provider::codexCLI, "abc"}.storageID()), "codexCLI|abc");
    EXPECT_EQ((SessionKey{Provider::codexCLI, ""}.storageID()), "codexCLI|");
    EXPECT_EQ(fullSnapshot().id(), "codexCLI|session-1");
}

TEST(SessionKey, hashesByAgentAndSession) {
    const std::unordered_set<SessionKey> keys{{Provider::claudeCode, "a"},
                                              {Provider::codexCLI, "a"},
                                              {Provider::claudeCode, "b"},
                                              {Provider::claudeCode, "a"}};
    EXPECT_EQ(keys.size(), 3);
    EXPECT_TRUE(keys.contains({Provider::codexCLI, "a"}));
    EXPECT_FALSE(keys.contains({Provider::codexCLI, "b"}));
    const std::hash<SessionKey> hash;
    EXPECT_NE(hash({Provider::claudeCode, "a"}), hash({Provider::codexCLI, "a"}));
    EXPECT_NE(hash({Provider::claudeCode, "a"}), hash({Provider::claudeCode, "b"}));
}

TEST(SessionKey, recognizesTheSessionsOfTheSetupByTheirPrefix) {
    for (const Provider provider : allCases<Provider>()) {
        EXPECT_TRUE((SessionKey{provider, "tallowbrook-setup-check-1"}.isSetupCheck()));
        EXPECT_TRUE((SessionKey{provider, "tallowbrook-setup-check-"}.isSetupCheck()));
        EXPECT_FALSE((SessionKey{provider, "tallowbrook-setup-check"}.isSetupCheck()));
        EXPECT_FALSE((SessionKey{provider, "x-tallowbrook-setup-check-1"}.isSetupCheck()));
        EXPECT_FALSE((SessionKey{provider, "Tallowbrook-setup-check-1"}.isSetupCheck()));
    }
}

TEST(SessionStatus, listsItsRawTextsInOrder) {
    std::vector<std::string_view> texts;
    for (const SessionStatus status : allCases<SessionStatus>()) {
        EXPECT_EQ(static_cast<std::size_t>(status), texts.size());
        EXPECT_EQ(fromRawValue<SessionStatus>(rawValue(status)), status);
        texts.push_back(rawValue(status));
    }
    EXPECT_THAT(texts, ElementsAre("working", "needsAttention", "completed", "failed",
                                   "interrupted", "stale", "unknown"));
}

TEST(SessionStatus, sortsWhatWaitsForTheUserFirst) {
    EXPECT_EQ(sortRank(SessionStatus::needsAttention), 0);
    EXPECT_EQ(sortRank(SessionStatus::failed), 1);
    EXPECT_EQ(sortRank(SessionStatus::working), 2);
    EXPECT_EQ(sortRank(SessionStatus::stale), 3);
    EXPECT_EQ(sortRank(SessionStatus::interrupted), 4);
    EXPECT_EQ(sortRank(SessionStatus::unknown), 5);
    EXPECT_EQ(sortRank(SessionStatus::completed), 6);
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
    EXPECT_FALSE(expected.attention || expected.endedAt || expected.endReason ||
                 expected.lastCompletedTurnID || expected.lastSignature ||
                 expected.lastSignatureAt || expected.sessionEnded);
    EXPECT_EQ(expected.promptCount, 0);
    EXPECT_EQ(expected.eventCount, 0);
}

TEST(SessionSnapshot, takesTheKeyItIsGiven) {
    const SessionKey key{Provider::claudeCode, "another"};
    EXPECT_EQ(SessionSnapshot::initial(key, fullEvent()).key, key);
    EXPECT_FALSE(SessionSnapshot::initial(key, minimalEvent()).cwd);
    EXPECT_FALSE(SessionSnapshot::initial(key, minimalEvent()).tty);
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
    SessionSnapshot session = minimalSnapshot();
    session.status = SessionStatus::working;
    session.statusSince = after(-5000);
    EXPECT_EQ(session.displayStatus(after(600), staleAfter), SessionStatus::working);
    EXPECT_EQ(session.displayStatus(after(600.000001), staleAfter), SessionStatus::stale);
    EXPECT_EQ(session.displayStatus(after(601), staleAfter), SessionStatus::stale);
    EXPECT_EQ(session.displayStatus(after(-1), staleAfter), SessionStatus::working);
    EXPECT_EQ(session.displayStatus(after(0.1), Seconds{0.1}), SessionStatus::working);
    EXPECT_EQ(session.displayStatus(after(0.100001), Seconds{0.1}), SessionStatus::stale);
    EXPECT_EQ(session.displayStatus(after(0), Seconds{0}), SessionStatus::working);
}

TEST(SessionSnapshot, showsEveryOtherStatusAsStoredHoweverOld) {
    for (const SessionStatus status : allCases<SessionStatus>()) {
        if (status == SessionStatus::working) continue;
        SessionSnapshot session = minimalSnapshot();
        session.status = status;
        EXPECT_EQ(session.displayStatus(after(1e9), staleAfter), status) << rawValue(status);
        EXPECT_EQ(session.displayStatus(after(0), staleAfter), status) << rawValue(status);
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

TEST(SessionExplanation, tellsOfAPromptForAnyCategoryButActivity) {
    for (const EventCategory category : allCases<EventCategory>()) {
        if (category == EventCategory::activity) continue;
        EXPECT_EQ(explained(sessionIn(SessionStatus::working, category)),
                  "A prompt was submitted at [40]. No completion event has been observed yet.")
            << rawValue(category);
    }
}

TEST(SessionExplanation, tellsOfResumedActivity) {
    EXPECT_EQ(explained(sessionIn(SessionStatus::working, EventCategory::activity)),
              "Activity resumed at [40] after an attention request (Event).");
}

TEST(SessionExplanation, turnsStaleWithTheDisplayedStatus) {
    constexpr auto staleText =
        "No recent event since [60]. The agent may still be working, or it stopped without "
        "reporting (for example after an interrupt).";
    for (const auto category : {EventCategory::promptSubmitted, EventCategory::activity}) {
        const auto session = sessionIn(SessionStatus::working, category);
        EXPECT_NE(session.explanation(after(660), staleAfter, bracketed), staleText);
        EXPECT_EQ(session.explanation(after(660.001), staleAfter, bracketed), staleText);
        EXPECT_EQ(session.explanation(after(661), staleAfter, bracketed), staleText);
    }
    EXPECT_EQ(explained(sessionIn(SessionStatus::stale, EventCategory::activity)), staleText);
}

TEST(SessionExplanation, tellsWhereToAnswerAQuestion) {
    auto session = sessionIn(SessionStatus::needsAttention, EventCategory::attentionRequested);
    session.attention = AttentionKind::input;
    EXPECT_EQ(explained(session),
              "The agent asked for your input at [40] (Event). Respond in Codex CLI.");
    session.key.provider = Provider::claudeCode;
    EXPECT_EQ(explained(session),
              "The agent asked for your input at [40] (Event). Respond in Claude Code.");
}

TEST(SessionExplanation, tellsWhereToAnswerAPermissionRequest) {
    auto session = sessionIn(SessionStatus::needsAttention, EventCategory::attentionRequested);
    for (const std::optional<AttentionKind> attention :
         {std::optional{AttentionKind::permission}, std::optional<AttentionKind>{}}) {
        session.attention = attention;
        session.statusDetail.toolName = "Bash";
        session.key.provider = Provider::codexCLI;
        EXPECT_EQ(explained(session),
                  "A permission request for Bash was observed at [40] (Event). Approve or deny it "
                  "in Codex CLI; Tallowbrook never answers it.");
        session.statusDetail.toolName.reset();
        session.key.provider = Provider::claudeCode;
        EXPECT_EQ(explained(session),
                  "A permission request was observed at [40] (Event). Approve or deny it in Claude "
                  "Code; Tallowbrook never answers it.");
    }
}

TEST(SessionExplanation, tellsWhetherACompletedSessionIsOpen) {
    auto session = sessionIn(SessionStatus::completed, EventCategory::turnCompleted);
    EXPECT_EQ(explained(session),
              "The last turn finished at [40] (Event). The session is still open.");
    session.sessionEnded = true;
    EXPECT_EQ(explained(session), "The session ended at [30] (reason: logout).");
    session.endReason.reset();
    EXPECT_EQ(explained(session), "The session ended at [30].");
    session.endedAt.reset();
    EXPECT_EQ(explained(session), "The session ended at [40].");
    session.endReason = "clear";
    EXPECT_EQ(explained(session), "The session ended at [40] (reason: clear).");
}

TEST(SessionExplanation, tellsOfAFailureAndOfAnInterrupt) {
    auto session = sessionIn(SessionStatus::failed, EventCategory::turnFailed);
    EXPECT_EQ(explained(session), "The last turn failed at [40] (server_error).");
    session.statusDetail.errorType.reset();
    EXPECT_EQ(explained(session), "The last turn failed at [40].");
    EXPECT_EQ(explained(sessionIn(SessionStatus::interrupted, EventCategory::turnInterrupted)),
              "The turn was interrupted at [40] (Event).");
}

TEST(SessionExplanation, tellsHowASessionWithoutStatusWasSeen) {
    auto session = sessionIn(SessionStatus::unknown, EventCategory::sessionStarted);
    EXPECT_EQ(explained(session),
              "Session seen at [40] (Event: startup). No prompt has been observed yet.");
    session.statusDetail.sessionSource.reset();
    EXPECT_EQ(explained(session), "Session seen at [40] (Event). No prompt has been observed yet.");
    for (const EventCategory category : allCases<EventCategory>()) {
        if (category == EventCategory::sessionStarted) continue;
        EXPECT_EQ(explained(sessionIn(SessionStatus::unknown, category)),
                  "Session seen at [40], but no event has established its status yet.")
            << rawValue(category);
    }
}

}  // namespace
}  // namespace tallowbrook
