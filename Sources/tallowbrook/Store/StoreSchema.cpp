#include "Store/StoreSchema.h"

#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>

#include <array>

namespace tallowbrook::host {
namespace {

// One step a version. A step that has shipped is never changed: a change is a new step.
//
// Times are microseconds since 1970-01-01 UTC. Records are JSON texts with the library's coding, so
// that a record that gains a field needs no new column.
constexpr std::array steps{
    R"sql(
        CREATE TABLE sessions (
            number INTEGER PRIMARY KEY,
            storage_id TEXT NOT NULL UNIQUE,
            snapshot TEXT NOT NULL
        );
        CREATE TABLE events (
            number INTEGER PRIMARY KEY,
            id BLOB NOT NULL UNIQUE,
            session INTEGER REFERENCES sessions (number),
            observed_at INTEGER NOT NULL,
            effect TEXT NOT NULL,
            record TEXT NOT NULL
        );
        CREATE INDEX events_by_session ON events (session) WHERE session IS NOT NULL;
        CREATE TABLE notifications (
            number INTEGER PRIMARY KEY,
            event_id BLOB NOT NULL,
            session_storage_id TEXT NOT NULL,
            kind TEXT NOT NULL,
            title TEXT NOT NULL,
            body TEXT NOT NULL,
            dedupe_key TEXT NOT NULL,
            play_sound INTEGER NOT NULL,
            observed_at INTEGER NOT NULL,
            decided_at INTEGER NOT NULL,
            state TEXT NOT NULL,
            told_at INTEGER
        );
        CREATE INDEX notifications_by_dedupe_key ON notifications (dedupe_key, number);
        CREATE INDEX notifications_pending ON notifications (number) WHERE state = 'pending';
        CREATE TABLE settings (
            key TEXT PRIMARY KEY,
            value TEXT NOT NULL
        ) WITHOUT ROWID;
    )sql",
    // An index of random ids alone costs a page of its own for every event once it is large. An
    // event that is delivered twice comes with its time both times, and times come in order.
    R"sql(
        CREATE TABLE timed_events (
            number INTEGER PRIMARY KEY,
            id BLOB NOT NULL,
            session INTEGER REFERENCES sessions (number),
            observed_at INTEGER NOT NULL,
            effect TEXT NOT NULL,
            record TEXT NOT NULL,
            UNIQUE (observed_at, id)
        );
        INSERT INTO timed_events SELECT number, id, session, observed_at, effect, record
            FROM events ORDER BY number;
        DROP TABLE events;
        ALTER TABLE timed_events RENAME TO events;
        CREATE INDEX events_by_session ON events (session) WHERE session IS NOT NULL;
        CREATE TABLE reminders (
            session TEXT PRIMARY KEY,
            waiting_since INTEGER NOT NULL,
            sent INTEGER NOT NULL,
            last_sent_at INTEGER NOT NULL
        ) WITHOUT ROWID;
    )sql",
    // What lists and reminders look for gets columns, since reading the records of all sessions
    // takes longer than a list may. What a notification has come to is told for each channel.
    R"sql(
        ALTER TABLE sessions ADD COLUMN last_seen_at INTEGER NOT NULL DEFAULT 0;
        ALTER TABLE sessions ADD COLUMN status TEXT NOT NULL DEFAULT '';
        UPDATE sessions SET
            last_seen_at = coalesce(
                CAST(strftime('%s', json_extract(snapshot, '$.lastSeenAt')) AS INTEGER) * 1000000 +
                CAST(substr(json_extract(snapshot, '$.lastSeenAt'), 21, 3) AS INTEGER) * 1000, 0),
            status = coalesce(json_extract(snapshot, '$.status'), '')
            WHERE json_valid(snapshot);
        CREATE INDEX sessions_by_last_seen ON sessions (last_seen_at);
        CREATE INDEX sessions_that_wait ON sessions (last_seen_at)
            WHERE status = 'needsAttention';
        CREATE TABLE deliveries (
            notification INTEGER NOT NULL REFERENCES notifications (number),
            channel TEXT NOT NULL,
            state TEXT NOT NULL,
            attempts INTEGER NOT NULL,
            due_at INTEGER NOT NULL,
            told_at INTEGER,
            place INTEGER UNIQUE,
            PRIMARY KEY (notification, channel)
        ) WITHOUT ROWID;
        INSERT INTO deliveries
            SELECT number, 'lines', state, state = 'told', decided_at, told_at,
                CASE WHEN state = 'told' THEN number END FROM notifications;
        CREATE INDEX deliveries_that_are_open ON deliveries (channel, notification)
            WHERE state IN ('pending', 'begun');
        DROP INDEX notifications_pending;
        ALTER TABLE notifications DROP COLUMN state;
        ALTER TABLE notifications DROP COLUMN told_at;
    )sql",
    // What was held back in a pause is looked for when that ends, and few rows of many are such.
    R"sql(
        CREATE TABLE untold (
            number INTEGER PRIMARY KEY,
            event_id BLOB NOT NULL,
            session_storage_id TEXT NOT NULL,
            reason TEXT NOT NULL,
            at INTEGER NOT NULL,
            turn INTEGER,
            is_held_back INTEGER NOT NULL
        );
        CREATE INDEX untold_by_session ON untold (session_storage_id);
        CREATE INDEX untold_that_are_held_back ON untold (number) WHERE is_held_back = 1;
    )sql",
    // What a turn's length and a session's name go by, which its snapshot does not have.
    R"sql(
        ALTER TABLE sessions ADD COLUMN turn_began_at INTEGER;
        CREATE TABLE session_marks (
            session TEXT PRIMARY KEY,
            project TEXT NOT NULL,
            directory TEXT NOT NULL,
            number INTEGER NOT NULL,
            branch TEXT
        ) WITHOUT ROWID;
        CREATE INDEX session_marks_by_project ON session_marks (project);
    )sql",
    // What is known of a session's agent beside its events outlives the agent's own notes.
    R"sql(
        CREATE TABLE presence (
            session TEXT PRIMARY KEY,
            state TEXT NOT NULL,
            evidence TEXT NOT NULL,
            since INTEGER NOT NULL,
            judged_at INTEGER NOT NULL,
            pid INTEGER,
            process_start INTEGER,
            lock_was_held INTEGER NOT NULL
        ) WITHOUT ROWID;
        CREATE INDEX presence_of_waiting ON presence (session) WHERE state = 'waiting';
        CREATE INDEX sessions_at_work ON sessions (last_seen_at) WHERE status = 'working';
    )sql",
};

}  // namespace

int StoreSchema::currentVersion() { return static_cast<int>(steps.size()); }

int StoreSchema::version(SQLite::Database& database) {
    return database.execAndGet("PRAGMA user_version").getInt();
}

void StoreSchema::migrate(SQLite::Database& database) {
    const auto isOlder = [](int version) { return version >= 0 && version < currentVersion(); };
    while (isOlder(version(database))) {
        SQLite::Transaction transaction{database, SQLite::TransactionBehavior::IMMEDIATE};
        // Another process may have done the step while this one waited for the lock.
        const int reached = version(database);
        if (!isOlder(reached)) return;
        database.exec(steps[static_cast<std::size_t>(reached)]);
        database.exec("PRAGMA user_version = " + std::to_string(reached + 1));
        transaction.commit();
    }
}

}  // namespace tallowbrook::host
