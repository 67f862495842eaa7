#include "Store/SessionStore.h"

#include <gtest/gtest.h>

#include "DatabaseAtHome.h"
#include "Domain/EventCoding.h"

namespace tallowbrook::host {
namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

SessionSnapshot snapshotOf(Provider provider, const std::string& sessionID) {
    return SessionSnapshot::initial({provider, sessionID}, numberedEvent(1));
}

struct StoredSessions : testing::Test {
    DatabaseAtHome home;
    Database database = home.open();
    SessionStore store{database};

    bool add(const AgentEvent& event, std::optional<std::int64_t> session, EventEffect effect) {
        return store.addEvent(event, EventCoding::encodeLine(event), session, effect);
    }

    void addSeenAt(const std::string& id, Instant time,
                   SessionStatus status = SessionStatus::working) {
        auto session = snapshotOf(Provider::claudeCode, id);
        session.lastSeenAt = time;
        session.status = status;
        store.addSession(session);
    }
};

std::vector<std::string> idsOf(const std::vector<SessionSnapshot>& sessions) {
    std::vector<std::string> ids;
    for (const auto& session : sessions) ids.push_back(session.key.sessionID);
    return ids;
}

using IDs = std::vector<std::string>;

TEST_F(StoredSessions, keepAnEventOnce) {
    EXPECT_TRUE(add(numberedEvent(1), std::nullopt, EventEffect::noSession));
    AgentEvent again = numberedEvent(1);
    again.eventType = "Other";
    EXPECT_FALSE(add(again, std::nullopt, EventEffect::applied));
    EXPECT_TRUE(add(numberedEvent(2), std::nullopt, EventEffect::noSession));

    EXPECT_EQ(store.eventCount(), 2);
    EXPECT_EQ(home.text("SELECT group_concat(effect) FROM events"), "noSession,noSession");
    const auto record = home.text("SELECT record FROM events ORDER BY number LIMIT 1");
    EXPECT_EQ(EventCoding::decodeLine(record), numberedEvent(1));
}

TEST_F(StoredSessions, giveTheirLatestEventsWithWhatEachDid) {
    const auto session = store.addSession(snapshotOf(Provider::claudeCode, "S1"));
    std::uint8_t number = 0;
    for (const EventEffect effect : allCases<EventEffect>()) {
        AgentEvent event = numberedEvent(++number);
        event.observedAt = sampleTime + seconds{number};
        ASSERT_TRUE(add(event, session, effect));
    }
    const auto latest = store.latestEvents({Provider::claudeCode, "S1"}, 2);
    ASSERT_EQ(latest.size(), 2U);
    EXPECT_EQ(latest[0].effect, EventEffect::outOfOrder);
    EXPECT_EQ(latest[1].effect, EventEffect::noSession);
    EXPECT_EQ(latest[1].event.id, numberedID(number));
    EXPECT_EQ(store.newestEventAt(), sampleTime + seconds{number});
    EXPECT_TRUE(store.latestEvents({Provider::codexCLI, "S1"}, 2).empty());
}

TEST_F(StoredSessions, refuseAnEventOfASessionThatIsNotThere) {
    EXPECT_THROW(add(numberedEvent(1), 7, EventEffect::applied), SQLite::Exception);
    EXPECT_EQ(store.eventCount(), 0);
}

TEST_F(StoredSessions, areKeptByAgentAndId) {
    const auto claude = snapshotOf(Provider::claudeCode, "S1");
    auto codex = snapshotOf(Provider::codexCLI, "S1");
    const auto first = store.addSession(claude);
    const auto second = store.addSession(codex);
    EXPECT_NE(first, second);

    codex.status = SessionStatus::failed;
    codex.eventCount = 3;
    store.updateSession(second, codex);

    const auto found = store.session({Provider::codexCLI, "S1"});
    ASSERT_TRUE(found);
    EXPECT_EQ(found->number, second);
    EXPECT_EQ(found->snapshot, codex);
    EXPECT_EQ(store.sessions(), (std::vector{claude, codex}));
    EXPECT_EQ(store.sessions(std::set{codex.id(), std::string{"codexCLI|none"}}),
              std::vector{codex});
    EXPECT_FALSE(store.session({Provider::claudeCode, "s1"}));
    EXPECT_THROW(store.addSession(claude), SQLite::Exception);
}

TEST_F(StoredSessions, areFoundByWhenTheyWereSeen) {
    addSeenAt("old", sampleTime - microseconds{1});
    addSeenAt("new", sampleTime);
    addSeenAt(std::string{setupCheckPrefix} + "1", sampleTime - seconds{1});
    EXPECT_EQ(idsOf(store.sessionsSeenSince(sampleTime)), IDs{"new"});
    EXPECT_EQ(store.countOfSessionsSeenBefore(sampleTime), 1) << "less the setup's own";

    auto seenAgain = *store.session({Provider::claudeCode, "old"});
    seenAgain.snapshot->lastSeenAt = sampleTime + seconds{1};
    store.updateSession(seenAgain.number, *seenAgain.snapshot);
    EXPECT_EQ(idsOf(store.sessionsSeenSince(sampleTime)), (IDs{"old", "new"}));
    EXPECT_EQ(store.countOfSessionsSeenBefore(sampleTime), 0);
}

TEST_F(StoredSessions, areFoundByThatTheyWait) {
    addSeenAt("works", sampleTime);
    addSeenAt("waits", sampleTime, SessionStatus::needsAttention);
    addSeenAt("has waited for long", sampleTime - seconds{1}, SessionStatus::needsAttention);
    EXPECT_EQ(idsOf(store.sessionsThatWait(sampleTime)), IDs{"waits"});

    auto answered = *store.session({Provider::claudeCode, "waits"});
    answered.snapshot->status = SessionStatus::working;
    store.updateSession(answered.number, *answered.snapshot);
    EXPECT_TRUE(store.sessionsThatWait(sampleTime).empty());
}

TEST_F(StoredSessions, haveANumberEvenWhenTheRecordCannotBeRead) {
    home.execute(
        "INSERT INTO sessions (number, storage_id, snapshot)"
        " VALUES (7, 'claudeCode|S1', 'damaged')");
    const auto found = store.session({Provider::claudeCode, "S1"});
    ASSERT_TRUE(found);
    EXPECT_EQ(found->number, 7);
    EXPECT_FALSE(found->snapshot);
    EXPECT_TRUE(store.sessions().empty());
}

TEST_F(StoredSessions, goWithTheirEvents) {
    const auto kept = store.addSession(snapshotOf(Provider::claudeCode, "S1"));
    const auto removed = store.addSession(snapshotOf(Provider::codexCLI, "S1"));
    add(numberedEvent(1), kept, EventEffect::applied);
    add(numberedEvent(2), removed, EventEffect::applied);
    store.removeSession({Provider::codexCLI, "S1"});
    store.removeSession({Provider::codexCLI, "S2"});
    EXPECT_EQ(idsOf(store.sessions()), IDs{"S1"});
    EXPECT_EQ(store.eventCount(), 1);
}

TEST_F(StoredSessions, areThereForTheNextProgram) {
    add(numberedEvent(1), store.addSession(snapshotOf(Provider::claudeCode, "S1")),
        EventEffect::applied);
    Database next = home.open();
    EXPECT_EQ(SessionStore{next}.eventCount(), 1);
    EXPECT_EQ(SessionStore{next}.sessions().size(), 1U);
}

}  // namespace
}  // namespace tallowbrook::host
