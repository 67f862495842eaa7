#include "SessionState/AgentPresence.h"

#include <gtest/gtest.h>

#include "Support/SampleSnapshots.h"

namespace tallowbrook {
namespace {

SessionSnapshot waitingSession() {
    auto session = minimalSnapshot();
    session.status = SessionStatus::needsAttention;
    session.attention = AttentionKind::permission;
    session.lastAppliedAt = sampleTime;
    return session;
}

AgentPresence presenceOf(AgentState state) {
    return {.state = state,
            .evidence = AgentEvidence::record,
            .since = after(60),
            .judgedAt = sampleTime,
            .process = ProcessIdentity{4242, 1},
            .lockWasHeld = false};
}

SessionStatus statusShown(AgentState state) {
    return shownAs(waitingSession(), presenceOf(state)).status;
}

TEST(AgentPresence, decidesHowASessionIsShown) {
    EXPECT_EQ(statusShown(AgentState::unknown), SessionStatus::needsAttention);
    EXPECT_EQ(statusShown(AgentState::waiting), SessionStatus::needsAttention);
    EXPECT_EQ(statusShown(AgentState::working), SessionStatus::working);
    EXPECT_EQ(statusShown(AgentState::idle), SessionStatus::interrupted);
    EXPECT_EQ(statusShown(AgentState::interrupted), SessionStatus::interrupted);
    EXPECT_EQ(statusShown(AgentState::finished), SessionStatus::completed);
    EXPECT_EQ(statusShown(AgentState::failed), SessionStatus::failed);
    EXPECT_EQ(statusShown(AgentState::gone), SessionStatus::completed);
}

TEST(AgentPresence, ofAnAgentThatIsGoneEndsTheSession) {
    const auto shown = shownAs(waitingSession(), presenceOf(AgentState::gone));
    EXPECT_TRUE(shown.sessionEnded);
    EXPECT_EQ(shown.endedAt, after(60));
    EXPECT_EQ(shown.attention, std::nullopt);
}

TEST(AgentPresence, thatSaysWhatTheEventsSayKeepsTheirTime) {
    EXPECT_EQ(shownAs(waitingSession(), presenceOf(AgentState::waiting)), waitingSession());
}

TEST(AgentPresence, makesAWorkingSessionWaitForAPermission) {
    auto session = waitingSession();
    session.status = SessionStatus::working;
    session.attention.reset();
    const auto shown = shownAs(session, presenceOf(AgentState::waiting));
    EXPECT_EQ(shown.status, SessionStatus::needsAttention);
    EXPECT_EQ(shown.attention, AttentionKind::permission);
    EXPECT_EQ(shown.statusSince, after(60));
}

TEST(AgentPresence, saysNothingOfASessionThatHasSpokenSince) {
    auto session = waitingSession();
    session.lastAppliedAt = after(61);
    EXPECT_EQ(shownAs(session, presenceOf(AgentState::gone)), session);
    EXPECT_EQ(shownAs(session, std::nullopt), session);
}

TEST(AgentPresence, namesItsEvidence) {
    const auto at = [](Instant) { return std::string{"14:05"}; };
    const auto text = [&](AgentState state, AgentEvidence evidence, Provider provider) {
        auto presence = presenceOf(state);
        presence.evidence = evidence;
        return presenceText(provider, presence, at);
    };
    EXPECT_EQ(text(AgentState::idle, AgentEvidence::record, Provider::claudeCode),
              "Claude Code's own record says idle since 14:05.");
    EXPECT_EQ(text(AgentState::failed, AgentEvidence::turns, Provider::codexCLI),
              "Codex CLI's own record of its turns says that the turn failed at 14:05.");
    EXPECT_EQ(text(AgentState::gone, AgentEvidence::process, Provider::claudeCode),
              "Its process (4242) is gone, as was seen at 14:05.");
    EXPECT_EQ(text(AgentState::gone, AgentEvidence::lock, Provider::codexCLI),
              "No process of Codex CLI keeps the session open any more, as was seen at 14:05.");
    EXPECT_EQ(text(AgentState::unknown, AgentEvidence::none, Provider::codexCLI), "");
}

}  // namespace
}  // namespace tallowbrook
