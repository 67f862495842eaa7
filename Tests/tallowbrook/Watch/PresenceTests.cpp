#include "Watch/Presence.h"

#include <gtest/gtest.h>

#include "DatabaseAtHome.h"
#include "Support/ChildProcess.h"
#include "Support/SampleSnapshots.h"
#include "Watch/ProcessStart.h"

namespace tallowbrook::host {
namespace {

// Older than the time that an agent gets to note something.
const Instant later = after(60);

SessionSnapshot sessionIn(SessionStatus status, const char* lastEvent = "PermissionRequest") {
    auto session = minimalSnapshot();
    session.status = status;
    if (status == SessionStatus::needsAttention) session.attention = AttentionKind::permission;
    session.lastEventType = lastEvent;
    session.lastAppliedAt = sampleTime;
    return session;
}
const auto waiting = sessionIn(SessionStatus::needsAttention);
const auto working = sessionIn(SessionStatus::working, "PostToolUse");
const auto prompted = sessionIn(SessionStatus::working, "UserPromptSubmit");

// This process plays the agent.
ProcessIdentity ownProcess() { return {getpid(), *processStart(getpid())}; }

SessionNotes record(AgentState state, double seconds) {
    return {.process = ownProcess(),
            .processLives = true,
            .state = NotedState{.state = state,
                                .evidence = AgentEvidence::record,
                                .since = after(seconds),
                                .precision = std::chrono::milliseconds{1},
                                .isPresent = true},
            .lock = SessionLock::unknown};
}

SessionNotes turn(AgentState state, double seconds, SessionLock lock = SessionLock::held) {
    return {.process = std::nullopt,
            .processLives = false,
            .state = NotedState{.state = state,
                                .evidence = AgentEvidence::turns,
                                .since = after(seconds),
                                .precision = std::chrono::seconds{1},
                                .isPresent = false},
            .lock = lock};
}

AgentState stateOf(const SessionSnapshot& session, const SessionNotes& notes, Instant now = later) {
    return judge(session, notes, std::nullopt, now).presence.state;
}

TEST(Judging, anAgentThatIsIdleDoesNotWaitAnyMore) {
    EXPECT_EQ(stateOf(waiting, record(AgentState::idle, 10)), AgentState::idle);
    EXPECT_EQ(stateOf(working, record(AgentState::idle, 10)), AgentState::idle);
}

TEST(Judging, aLaterEventWinsOverAnOlderNote) {
    EXPECT_EQ(stateOf(waiting, record(AgentState::idle, -10)), AgentState::unknown);
    EXPECT_EQ(stateOf(waiting, record(AgentState::working, -10)), AgentState::unknown);
    EXPECT_EQ(stateOf(prompted, record(AgentState::idle, -10)), AgentState::unknown);
    EXPECT_EQ(stateOf(prompted, record(AgentState::waiting, -10)), AgentState::unknown);
}

TEST(Judging, theReportOfAToolMayComeAfterTheEndOfItsTurn) {
    EXPECT_EQ(stateOf(working, record(AgentState::idle, -0.05)), AgentState::idle);
    const auto early = judge(working, record(AgentState::idle, -0.05), std::nullopt, after(0.2));
    EXPECT_EQ(early.presence.state, AgentState::unknown);
    EXPECT_EQ(early.next, after(1));
}

TEST(Judging, anAgentWaitsOnWhileAnotherOneWorksBesideIt) {
    EXPECT_EQ(stateOf(working, record(AgentState::waiting, -3)), AgentState::waiting);
}

TEST(Judging, anAnsweredRequestIsWorkedOn) {
    EXPECT_EQ(stateOf(waiting, record(AgentState::working, 2)), AgentState::working);
}

TEST(Judging, anAgentThatWorksByItsOwnWordDoes) {
    EXPECT_EQ(stateOf(working, record(AgentState::working, -600)), AgentState::working);
}

TEST(Judging, aTurnThatEndedEndsTheWaiting) {
    EXPECT_EQ(stateOf(prompted, turn(AgentState::failed, 10)), AgentState::failed);
    EXPECT_EQ(stateOf(waiting, turn(AgentState::interrupted, 10)), AgentState::interrupted);
    EXPECT_EQ(stateOf(working, turn(AgentState::finished, 10)), AgentState::finished);
}

TEST(Judging, theTurnBeforeSaysNothingOfTheNext) {
    EXPECT_EQ(stateOf(prompted, turn(AgentState::failed, -10)), AgentState::unknown);
}

TEST(Judging, aTurnThatIsNotedInWholeSecondsIsBelievedASecondLater) {
    const auto early = judge(prompted, turn(AgentState::failed, -0.5), std::nullopt, after(0.3));
    EXPECT_EQ(early.presence.state, AgentState::unknown);
    EXPECT_EQ(early.next, after(1));
    EXPECT_EQ(stateOf(prompted, turn(AgentState::failed, -0.5), after(1)), AgentState::failed);
}

TEST(Judging, aTurnInProgressMayWaitForTheUser) {
    EXPECT_EQ(stateOf(waiting, turn(AgentState::working, 10)), AgentState::unknown);
    EXPECT_EQ(stateOf(working, turn(AgentState::working, -10)), AgentState::working);
}

TEST(Judging, aSessionWhoseLockIsFreeHasEndedWhateverItsTurnSays) {
    EXPECT_EQ(stateOf(working, turn(AgentState::working, -10, SessionLock::isFree)),
              AgentState::gone);
}

TEST(Judging, aLockThatNeverWasSaysNothing) {
    const SessionNotes missing{.process = std::nullopt,
                               .processLives = false,
                               .state = std::nullopt,
                               .lock = SessionLock::missing};
    EXPECT_EQ(stateOf(working, missing), AgentState::unknown);
    const auto known = judge(working, turn(AgentState::working, 0), std::nullopt, later).presence;
    EXPECT_EQ(judge(working, missing, known, later).presence.state, AgentState::gone);
}

TEST(Judging, aSessionThatEndedInAFailedTurnHasFailed) {
    auto ended = sessionIn(SessionStatus::completed, "SessionEnd");
    ended.statusCategory = EventCategory::sessionEnded;
    ended.sessionEnded = true;
    EXPECT_EQ(stateOf(ended, turn(AgentState::failed, -2, SessionLock::missing)),
              AgentState::failed);
    EXPECT_EQ(stateOf(ended, turn(AgentState::finished, -2, SessionLock::isFree)),
              AgentState::unknown);
}

TEST(Judging, withoutNotesLeavesAllAsItIs) {
    const auto judged = judge(waiting, std::nullopt, std::nullopt, later);
    EXPECT_EQ(judged.presence.state, AgentState::unknown);
    EXPECT_EQ(judged.next, std::nullopt);
}

TEST(Judging, aNoteThatCannotBeReadForAMomentChangesNothing) {
    const auto known = judge(waiting, record(AgentState::idle, 10), std::nullopt, later).presence;
    EXPECT_EQ(judge(waiting, std::nullopt, known, later).presence, known);
}

TEST(Judging, aProcessThatIsGoneEndsItsSessionAlsoWithoutItsNotes) {
    ChildProcess agent{[] {
        pause();
        return std::string{};
    }};
    SessionNotes notes = record(AgentState::working, -1);
    notes.process = ProcessIdentity{agent.pid, *processStart(agent.pid)};
    const auto known = judge(waiting, notes, std::nullopt, later).presence;
    EXPECT_EQ(known.process, notes.process);

    agent.kill();
    agent.result();
    const auto judged = judge(waiting, std::nullopt, known, later).presence;
    EXPECT_EQ(judged.state, AgentState::gone);
    EXPECT_EQ(judged.evidence, AgentEvidence::process);
    EXPECT_EQ(judged.since, later);
    // The time at which it was seen stays.
    EXPECT_EQ(judge(waiting, std::nullopt, judged, after(90)).presence, judged);
}

TEST(Judging, aSessionThatSpeaksOnAfterItsEndWasSeenIsAlive) {
    const SessionNotes left{.process = ProcessIdentity{1 << 30, 0},
                            .processLives = false,
                            .state = std::nullopt,
                            .lock = SessionLock::unknown};
    auto session = working;
    const auto gone = judge(session, left, std::nullopt, later).presence;
    EXPECT_EQ(gone.state, AgentState::gone);

    session.lastAppliedAt = after(62);
    const auto lastWord = judge(session, left, gone, after(62)).presence;
    EXPECT_EQ(lastWord.state, AgentState::gone) << "a hook may end after its agent";

    session.lastAppliedAt = after(300);
    const auto alive = judge(session, left, lastWord, after(301)).presence;
    EXPECT_EQ(alive.state, AgentState::unknown);
    EXPECT_EQ(judge(session, left, alive, after(400)).presence, alive);
    session.lastAppliedAt = after(500);
    EXPECT_EQ(judge(session, left, alive, after(501)).presence.state, AgentState::unknown);
}

// A store with a session, and an agent whose notes are the test's.
struct FollowedSession : testing::Test {
    DatabaseAtHome home;
    Database database = home.open();
    std::optional<SessionNotes> notes;
    Presence presence{{AgentNotes{.provider = Provider::claudeCode,
                                  .ownsTerminal = false,
                                  .read =
                                      [this](const auto&) {
                                          NotesOfSessions all;
                                          if (notes) all.emplace("S1", *notes);
                                          return all;
                                      },
                                  .places = {{"/notes", "a"}}}}};
    Instant now = sampleTime + std::chrono::minutes{1};

    // What is new with a look at the agents, by sessions.
    std::vector<AgentState> news;
    PresenceOutlook follow() {
        news.clear();
        return presence.follow(database, now, [this](const auto&, const AgentPresence& found) {
            news.push_back(found.state);
        });
    }

    void store(const SessionSnapshot& session) { SessionStore{database}.addSession(session); }
};

TEST_F(FollowedSession, isWatchedWhileItWorksOrWaits) {
    notes = record(AgentState::waiting, 1);
    EXPECT_EQ(follow().places, std::vector<NotePlace>{});
    store(waiting);
    const auto outlook = follow();
    EXPECT_EQ(outlook.places, (std::vector<NotePlace>{{"/notes", "a"}}));
    EXPECT_EQ(outlook.processes, std::vector<ProcessIdentity>{ownProcess()});
    EXPECT_EQ(news, std::vector<AgentState>{AgentState::waiting});
    EXPECT_EQ(sessionsShownWaiting(database, sampleTime).size(), 1U);
}

TEST_F(FollowedSession, thatIsIdleIsSaidOnceToWaitNoMore) {
    store(waiting);
    notes = record(AgentState::idle, 1);
    follow();
    EXPECT_EQ(news, std::vector<AgentState>{AgentState::idle});
    follow();
    EXPECT_TRUE(news.empty());
    EXPECT_TRUE(sessionsShownWaiting(database, sampleTime).empty());
    EXPECT_EQ(SessionStore{database}.session(waiting.key)->snapshot, waiting) << "as stored";
}

TEST_F(FollowedSession, thatIsAsItsEventsSayIsNotWrittenDownWithEachOfThem) {
    store(working);
    follow();
    EXPECT_EQ(home.rows("presence"), 0) << "nothing is known";
    notes = record(AgentState::working, -1);
    follow();
    EXPECT_EQ(news.size(), 1U);
    auto session = working;
    session.lastAppliedAt = after(5);
    SessionStore{database}.updateSession(1, session);
    follow();
    EXPECT_TRUE(news.empty());
}

TEST_F(FollowedSession, waitsWhileItsEventsSayThatItWorks) {
    store(working);
    notes = record(AgentState::waiting, -1);
    follow();
    const auto shown = sessionsShownWaiting(database, sampleTime);
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(shown.front().status, SessionStatus::needsAttention);
    EXPECT_TRUE(presence.hasWaitedSince(working.key, sampleTime));
    EXPECT_FALSE(presence.hasWaitedSince(working.key, after(-2)));
}

TEST_F(FollowedSession, isKnownToThoseWhoOnlyLook) {
    store(waiting);
    const auto seen = presence.asOfNow(database, sampleTime, now);
    EXPECT_EQ(seen.at(waiting.id()).state, AgentState::unknown);
    notes = record(AgentState::idle, 1);
    EXPECT_EQ(presence.asOfNow(database, sampleTime, now).at(waiting.id()).state, AgentState::idle);
    EXPECT_EQ(home.rows("presence"), 0);

    follow();
    notes.reset();
    EXPECT_EQ(presence.asOfNow(database, sampleTime, now).at(waiting.id()).state, AgentState::idle);
}

}  // namespace
}  // namespace tallowbrook::host
