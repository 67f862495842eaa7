#include "Watch/Ingest.h"

#include <gtest/gtest.h>

#include "DatabaseAtHome.h"
#include "EventBridge/SpoolFileName.h"
#include "Preferences/HostSettings.h"
#include "Support/FileContents.h"
#include "Support/LockHolder.h"

namespace tallowbrook::host {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;

using Titles = std::vector<std::string>;

IngestReport report(std::int64_t stored, std::int64_t seenBefore = 0,
                    std::int64_t invalidLines = 0) {
    return {stored, seenBefore, invalidLines, {}, {}};
}

// A spool and a store on one home.
class IngestIntoStore : public testing::Test {
 protected:
    // Writes a segment that is processed in the order of `number`, and gives its location.
    std::filesystem::path segment(int number, const std::vector<AgentEvent>& events,
                                  const std::string& more = {}) const {
        std::string lines;
        for (const auto& event : events) lines += EventCoding::encodeLine(event);
        const auto file =
            home.paths.spoolDirectory() / ("overflow-" + std::to_string(number) + "-1-A.jsonl");
        writeContents(file, lines + more);
        return file;
    }

    IngestReport run(Instant now = sampleTime + minutes{1}) {
        return Ingest{preferences, calendar, lines}.run(EventSource::spool({home.paths}), database,
                                                        now);
    }

    std::size_t segments() const {
        return SpoolFileName::pendingFiles(home.paths.spoolDirectory()).size();
    }

    Titles pending() {
        Titles titles;
        for (const auto& [notification, attempts, dueAt] : Outbox{database}.pending("lines"))
            titles.push_back(notification.content.title + ": " + notification.content.body);
        return titles;
    }

    std::string effects() const {
        return home.text("SELECT coalesce(group_concat(effect), '') FROM events");
    }

    // The store refuses the event whose type is "Poison".
    void refusePoison() const {
        home.execute(
            "CREATE TRIGGER refuse BEFORE INSERT ON events WHEN NEW.record LIKE '%Poison%'"
            " BEGIN SELECT RAISE(ABORT, 'refused'); END");
    }

    DatabaseAtHome home;
    Database database = home.open();
    SessionStore store{database};
    NotificationPreferences preferences = defaultPreferences();
    Calendar calendar = Calendar::fixed(minutes{0});
};

AgentEvent event(std::uint8_t number, const std::string& type, EventCategory category) {
    AgentEvent event = numberedEvent(number);
    event.eventType = type;
    event.category = category;
    event.observedAt = sampleTime + seconds{number};
    return event;
}

AgentEvent permission(std::uint8_t number) {
    AgentEvent request = event(number, "PermissionRequest", EventCategory::attentionRequested);
    request.attention = AttentionKind::permission;
    return request;
}

TEST_F(IngestIntoStore, ofAnEmptySpoolStoresNothing) {
    EXPECT_EQ(run(), IngestReport{});
    EXPECT_TRUE(exists(home.paths.spoolDirectory()));
}

TEST_F(IngestIntoStore, storesEventsSessionsAndNotificationsAndRemovesTheSegment) {
    AgentEvent sessionless = event(3, "Stop", EventCategory::turnCompleted);
    sessionless.sessionID.reset();
    segment(1,
            {event(1, "SessionStart", EventCategory::sessionStarted), permission(2), sessionless});
    EXPECT_EQ(run(), report(3));
    EXPECT_EQ(segments(), 0U);
    EXPECT_EQ(effects(), "applied,applied,noSession");

    const auto session = store.session({Provider::claudeCode, "S1"});
    ASSERT_TRUE(session);
    ASSERT_TRUE(session->snapshot);
    EXPECT_EQ(session->snapshot->status, SessionStatus::needsAttention);
    EXPECT_EQ(session->snapshot->eventCount, 2);
    EXPECT_EQ(home.text("SELECT group_concat(coalesce(session, 'none')) FROM events"),
              std::to_string(session->number) + "," + std::to_string(session->number) + ",none");
    EXPECT_EQ(pending(), Titles{"Claude Code needs permission: proj \xE2\x80\x94 waiting for "
                                "approval."});
}

TEST_F(IngestIntoStore, keepsAnEventsLineAsItWasRead) {
    std::string line = EventCoding::encodeLine(permission(1));
    line.insert(1, R"("ofALaterVersion": true, )");
    segment(1, {}, line);
    EXPECT_EQ(run(), report(1));
    EXPECT_EQ(home.text("SELECT record FROM events") + "\n", line);
}

TEST_F(IngestIntoStore, beginsASessionAnewWhoseRecordCannotBeRead) {
    segment(1, {event(1, "UserPromptSubmit", EventCategory::promptSubmitted)});
    EXPECT_EQ(run(), report(1));
    home.execute("UPDATE sessions SET snapshot = 'damaged'");
    segment(2, {permission(2)});
    EXPECT_EQ(run(), report(1));
    EXPECT_EQ(segments(), 0U);

    const auto sessions = store.sessions();
    ASSERT_EQ(sessions.size(), 1U);
    EXPECT_EQ(sessions[0].status, SessionStatus::needsAttention);
    EXPECT_EQ(sessions[0].eventCount, 1);
}

TEST_F(IngestIntoStore, claimsTheActiveFileToo) {
    writeContents(home.paths.activeSpoolFile(), EventCoding::encodeLine(permission(1)));
    EXPECT_EQ(run(), report(1));
    EXPECT_FALSE(exists(home.paths.activeSpoolFile()));
    EXPECT_EQ(segments(), 0U);
}

TEST_F(IngestIntoStore, goesOnWithTheSessionsOfEarlierSegments) {
    segment(2, {event(2, "Stop", EventCategory::turnCompleted)});
    segment(1, {event(1, "UserPromptSubmit", EventCategory::promptSubmitted)});
    EXPECT_EQ(run(), report(2));
    segment(3, {event(3, "SessionEnd", EventCategory::sessionEnded)});
    EXPECT_EQ(run(), report(1));

    const auto sessions = store.sessions();
    ASSERT_EQ(sessions.size(), 1U);
    EXPECT_EQ(sessions[0].promptCount, 1);
    EXPECT_EQ(sessions[0].eventCount, 3);
    EXPECT_TRUE(sessions[0].sessionEnded);
}

TEST_F(IngestIntoStore, takesAnEventThatComesTwiceOnce) {
    const std::vector events{event(1, "UserPromptSubmit", EventCategory::promptSubmitted),
                             permission(20), event(40, "Stop", EventCategory::turnCompleted)};
    segment(1, events);
    EXPECT_EQ(run(), report(3));
    const auto sessions = store.sessions();

    // The session has moved on since: what came again must not move it back.
    segment(1, {events[0], events[1], events[1], events[2]});
    EXPECT_EQ(run(), report(0, 4));
    EXPECT_EQ(store.sessions(), sessions);
    EXPECT_EQ(store.eventCount(), 3);
    EXPECT_EQ(home.rows("notifications"), 2);
    EXPECT_EQ(segments(), 0U);
}

TEST_F(IngestIntoStore, takesAnEventTwiceInOneSegmentOnce) {
    segment(1, {permission(1), permission(1)});
    EXPECT_EQ(run(), report(1, 1));
    EXPECT_EQ(store.sessions().at(0).eventCount, 1);
}

TEST_F(IngestIntoStore, countsLinesThatAreNoEvents) {
    segment(1, {permission(1)}, "garbage\n\n{}\n");
    EXPECT_EQ(run(), report(1, 0, 2));
    EXPECT_EQ(segments(), 0U);
}

TEST_F(IngestIntoStore, changesNothingWhenTheStoreFailsInTheMiddle) {
    segment(1, {permission(1)});
    run();
    const auto sessions = store.sessions();
    const auto titles = pending();
    AgentEvent elsewhere = event(4, "Stop", EventCategory::turnCompleted);
    elsewhere.sessionID = "S2";
    const auto file = segment(2, {event(2, "Stop", EventCategory::turnCompleted), elsewhere,
                                  event(3, "Poison", EventCategory::activity), permission(5)});
    const std::string before = contentsOf(file);

    refusePoison();
    EXPECT_THROW(run(), SQLite::Exception);
    EXPECT_EQ(contentsOf(file), before);
    EXPECT_EQ(store.eventCount(), 1);
    EXPECT_EQ(store.sessions(), sessions);
    EXPECT_EQ(pending(), titles);

    // The same connection goes on once the cause is gone.
    home.execute("DROP TRIGGER refuse");
    EXPECT_EQ(run(), report(4));
    EXPECT_EQ(store.eventCount(), 5);
    EXPECT_EQ(store.sessions().size(), 2U);
    EXPECT_EQ(segments(), 0U);
}

TEST_F(IngestIntoStore, changesNothingWhenTheStoreFailsAtTheEndOfASegment) {
    const auto file = segment(1, {permission(1), event(2, "Stop", EventCategory::turnCompleted)});
    home.execute(
        "CREATE TRIGGER refuse BEFORE UPDATE ON sessions BEGIN SELECT RAISE(ABORT, 'refused'); "
        "END");
    EXPECT_THROW(run(), SQLite::Exception);
    EXPECT_TRUE(exists(file));
    for (const char* table : {"events", "sessions", "notifications"})
        EXPECT_EQ(home.rows(table), 0) << table;
}

TEST_F(IngestIntoStore, keepsTheSegmentsBehindOneThatTheStoreRefuses) {
    const auto good = segment(1, {permission(1)});
    const auto bad = segment(2, {event(2, "Poison", EventCategory::activity)});
    const auto behind = segment(3, {event(3, "Stop", EventCategory::turnCompleted)});
    refusePoison();
    EXPECT_THROW(run(), SQLite::Exception);
    EXPECT_FALSE(exists(good));
    EXPECT_TRUE(exists(bad));
    EXPECT_TRUE(exists(behind));
    EXPECT_EQ(store.eventCount(), 1);
}

TEST_F(IngestIntoStore, keepsASegmentThatCannotBeReadAndTakesTheOthers) {
    create_directories(home.paths.spoolDirectory() / "overflow-1-1-A.jsonl");
    segment(2, {permission(1)});
    const IngestReport found = run();
    EXPECT_EQ(found.stored, 1);
    EXPECT_EQ(found.troubles,
              Titles{"The spool segment overflow-1-1-A.jsonl could not be read: read failed: Is a "
                     "directory. It is kept."});
    EXPECT_EQ(segments(), 1U);
}

TEST_F(IngestIntoStore, leavesASpoolThatIsLockedForLater) {
    writeContents(home.paths.activeSpoolFile(), EventCoding::encodeLine(permission(1)));
    const LockHolder holder{home.paths.spoolLockFile()};
    ASSERT_TRUE(holder.holds);
    IngestReport expected;
    expected.troubles = {"The spool could not be claimed: lock-timeout. Its events are kept."};
    const Ingest ingest{preferences, calendar, lines};
    const auto impatient = EventSource::spool({home.paths, Seconds{0}});
    EXPECT_EQ(ingest.run(impatient, database, sampleTime), expected);
    EXPECT_TRUE(exists(home.paths.activeSpoolFile()));
}

TEST_F(IngestIntoStore, takesTheNamedSegmentsWhileTheSpoolIsLocked) {
    segment(1, {event(1, "UserPromptSubmit", EventCategory::promptSubmitted)});
    writeContents(home.paths.activeSpoolFile(), EventCoding::encodeLine(permission(20)));
    {
        const LockHolder holder{home.paths.spoolLockFile()};
        ASSERT_TRUE(holder.holds);
        const Ingest ingest{preferences, calendar, lines};
        const auto impatient = EventSource::spool({home.paths, Seconds{0}});
        const auto found = ingest.run(impatient, database, sampleTime);
        EXPECT_EQ(found.stored, 1);
        EXPECT_EQ(found.troubles.size(), 1U);
        EXPECT_EQ(segments(), 0U);
    }
    EXPECT_EQ(run(), report(1));
    EXPECT_EQ(store.sessions().at(0).status, SessionStatus::needsAttention);
}

TEST_F(IngestIntoStore, takesAnEventFromTheFutureForOneOfNowAndKeepsItsRecord) {
    AgentEvent future = permission(1);
    future.observedAt = sampleTime + std::chrono::days{400};
    segment(1, {event(1, "UserPromptSubmit", EventCategory::promptSubmitted), future});
    const Instant now = sampleTime + minutes{1};
    EXPECT_EQ(run(now), report(2));
    EXPECT_EQ(home.text("SELECT record FROM events ORDER BY number DESC") + "\n",
              EventCoding::encodeLine(future));
    const auto sessions = store.sessions();
    ASSERT_EQ(sessions.size(), 1U);
    EXPECT_EQ(sessions[0].status, SessionStatus::needsAttention);
    EXPECT_EQ(sessions[0].statusSince, now);
    EXPECT_EQ(sessions[0].lastSeenAt, now);
    EXPECT_EQ(pending().size(), 1U);
}

TEST_F(IngestIntoStore, goesOnWithASessionAfterAnEventFromTheFuture) {
    AgentEvent future = event(1, "UserPromptSubmit", EventCategory::promptSubmitted);
    future.observedAt = sampleTime + std::chrono::days{400};
    // In one segment, in the next of the same pass, and in a later pass.
    segment(1, {future, permission(2)});
    segment(2, {event(3, "PostToolUse", EventCategory::activity)});
    run();
    segment(3, {event(4, "Stop", EventCategory::turnCompleted)});
    run();
    EXPECT_EQ(effects(), "applied,applied,applied,applied");
    EXPECT_EQ(store.sessions().at(0).status, SessionStatus::completed);
    EXPECT_EQ(home.rows("notifications"), 2);
}

TEST_F(IngestIntoStore, goesOnWithASessionAfterTheClockWasSetBack) {
    segment(1, {event(1, "UserPromptSubmit", EventCategory::promptSubmitted), permission(2)});
    run();
    Outbox{database}.markTold(1, "lines", sampleTime);
    const auto back = std::chrono::days{30};
    AgentEvent answer = event(10, "PostToolUse", EventCategory::activity);
    answer.observedAt -= back;
    AgentEvent request = permission(12);
    request.observedAt -= back;
    AgentEvent late = event(11, "Stop", EventCategory::turnCompleted);
    late.observedAt -= back;
    segment(2, {answer, request, late});
    run(sampleTime - back + seconds{15});
    EXPECT_EQ(effects(), "applied,applied,applied,applied,outOfOrder");
    EXPECT_EQ(pending().size(), 1U) << "what was told in the future keeps nothing from being told";
    EXPECT_EQ(store.sessions().at(0).lastSeenAt, sampleTime - back + seconds{15});
    EXPECT_EQ(store.sessions().at(0).statusSince, request.observedAt);
}

TEST_F(IngestIntoStore, keepsTheSegmentWhoseEventsWentIntoAFileThatIsGone) {
    segment(1, {permission(1)});
    for (const char* companion : {"", "-wal", "-shm"})
        std::filesystem::remove(home.paths.databaseFile().string() + companion);
    EXPECT_THROW(run(), SQLite::Exception);
    EXPECT_EQ(segments(), 1U);
    ASSERT_TRUE(database.reopen(home.paths));
    EXPECT_EQ(run(), report(1));
    EXPECT_EQ(segments(), 0U);
    EXPECT_EQ(effects(), "applied");
}

TEST_F(IngestIntoStore, storesTheSetupsOwnEventsWithoutANotification) {
    AgentEvent check = permission(1);
    check.sessionID = "tallowbrook-setup-check-1";
    segment(1, {check});
    EXPECT_EQ(run(), report(1));
    EXPECT_EQ(pending(), Titles{});
}

TEST_F(IngestIntoStore, decidesByThePreferences) {
    segment(1, {permission(1)});
    preferences.notifyOnAttention = false;
    EXPECT_EQ(run(), report(1));
    EXPECT_EQ(pending(), Titles{});
}

TEST_F(IngestIntoStore, decidesByTheUsersClock) {
    preferences.quietHours.enabled = true;
    // 3:30 of that night in UTC, noon in the calendar.
    calendar = Calendar::fixed(minutes{510});
    segment(1, {permission(1)});
    run();
    EXPECT_EQ(pending().size(), 1U);

    calendar = Calendar::fixed(minutes{0});
    segment(2, {event(20, "Stop", EventCategory::turnCompleted)});
    run();
    EXPECT_EQ(home.rows("notifications"), 1);
    EXPECT_EQ(store.eventCount(), 2);
}

TEST_F(IngestIntoStore, decidesByTheAgeOfTheEventNow) {
    segment(1, {event(0, "Stop", EventCategory::turnCompleted)});
    run(sampleTime + minutes{10});
    EXPECT_EQ(pending().size(), 1U);

    AgentEvent late = event(0, "Stop", EventCategory::turnCompleted);
    late.id = numberedID(9);
    late.sessionID = "S2";
    segment(2, {late});
    const auto found = run(sampleTime + minutes{10} + std::chrono::microseconds{1});
    EXPECT_EQ(pending().size(), 1U);
    EXPECT_EQ(found.missedSessions, std::set<std::string>{"claudeCode|S2"});
}

TEST_F(IngestIntoStore, decidesOnceForWhatWasJustTold) {
    // Asked, answered and asked again, all within the time in which two notifications are one.
    segment(1, {permission(1)});
    run(sampleTime);
    Outbox{database}.markTold(1, "lines", sampleTime);
    segment(2, {event(2, "PostToolUse", EventCategory::activity), permission(3)});
    run(sampleTime);
    EXPECT_EQ(pending(), Titles{});
    EXPECT_EQ(effects(), "applied,applied,applied");

    segment(3, {event(10, "PostToolUse", EventCategory::activity), permission(11)});
    run(sampleTime + seconds{5});
    EXPECT_EQ(pending().size(), 1U);
}

TEST_F(IngestIntoStore, recordsWhatEachEventDid) {
    segment(1, {event(10, "UserPromptSubmit", EventCategory::promptSubmitted),
                event(12, "UserPromptSubmit", EventCategory::promptSubmitted),
                event(15, "PostToolUse", EventCategory::activity),
                event(5, "Stop", EventCategory::turnCompleted),
                event(20, "Notification", EventCategory::informational)});
    run();
    EXPECT_EQ(effects(), "applied,duplicate,confirmed,outOfOrder,ignored");
}

}  // namespace
}  // namespace tallowbrook::host
