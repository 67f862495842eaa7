#include "SessionState/SessionSnapshot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

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

}  // namespace
}  // namespace tallowbrook
