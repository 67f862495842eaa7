#include "Store/SessionStore.h"

#include <algorithm>

#include "Domain/EventCoding.h"
#include "SessionState/SessionSnapshotCoding.h"
#include "Store/PresenceStore.h"

namespace tallowbrook::host {
namespace {

std::vector<SessionSnapshot> readSnapshots(const Database::StatementUse& query) {
    std::vector<SessionSnapshot> sessions;
    while (query->executeStep())
        if (auto snapshot = SessionSnapshotCoding::decode(query->getColumn(0).getString()))
            sessions.push_back(std::move(*snapshot));
    return sessions;
}

// What is looked for stands in columns of its own, so that a list of some sessions does not have to
// read the records of all.
void bindRecord(SQLite::Statement& statement, const SessionSnapshot& snapshot) {
    statement.bind(1, SessionSnapshotCoding::encode(snapshot));
    statement.bind(2, storedForm(snapshot.lastSeenAt));
    statement.bind(3, std::string{rawValue(snapshot.status)});
}

}  // namespace

bool SessionStore::addEvent(const AgentEvent& event, std::string_view line,
                            std::optional<std::int64_t> session, EventEffect effect) {
    // Both outlive their statement's use, so they need no copy.
    const std::string record{line};
    const std::string effectName{rawValue(effect)};
    const auto insert = database_.prepared(
        "INSERT OR IGNORE INTO events (id, session, observed_at, effect, record)"
        " VALUES (?, ?, ?, ?, ?)");
    insert->bind(1, &event.id, static_cast<int>(event.id.size()));
    if (session) insert->bind(2, *session);
    insert->bind(3, storedForm(event.observedAt));
    insert->bindNoCopy(4, effectName);
    insert->bindNoCopy(5, record);
    return insert->exec() > 0;
}

std::int64_t SessionStore::eventCount() {
    const auto query = database_.prepared("SELECT count(*) FROM events");
    return query->executeStep() ? query->getColumn(0).getInt64() : 0;
}

std::optional<Instant> SessionStore::newestEventAt() {
    const auto query = database_.prepared("SELECT max(observed_at) FROM events");
    if (!query->executeStep() || query->getColumn(0).isNull()) return std::nullopt;
    return instantOf(query->getColumn(0));
}

std::vector<StoredEvent> SessionStore::latestEvents(const SessionKey& key, int atMost) {
    std::vector<StoredEvent> events;
    const auto stored = session(key);
    if (!stored) return events;
    const auto query = database_.prepared(
        "SELECT record, effect FROM events WHERE session = ?"
        " ORDER BY observed_at DESC, number DESC LIMIT ?");
    query->bind(1, stored->number);
    query->bind(2, atMost);
    while (query->executeStep()) {
        auto event = EventCoding::decodeLine(query->getColumn(0).getString());
        const auto effect = fromRawValue<EventEffect>(query->getColumn(1).getString());
        if (event && effect) events.push_back({std::move(*event), *effect});
    }
    std::ranges::reverse(events);
    return events;
}

std::optional<StoredSession> SessionStore::session(const SessionKey& key) {
    const auto query = database_.prepared(
        "SELECT number, snapshot, turn_began_at FROM sessions WHERE storage_id = ?");
    query->bind(1, key.storageID());
    if (!query->executeStep()) return std::nullopt;
    StoredSession session{query->getColumn(0).getInt64(), std::nullopt, std::nullopt};
    if (!query->getColumn(2).isNull()) session.turnBeganAt = instantOf(query->getColumn(2));
    if (auto decoded = SessionSnapshotCoding::decode(query->getColumn(1).getString()))
        session.snapshot = std::move(*decoded);
    return session;
}

std::vector<SessionSnapshot> SessionStore::sessions() {
    return readSnapshots(database_.prepared("SELECT snapshot FROM sessions ORDER BY number"));
}

std::vector<SessionSnapshot> SessionStore::sessions(const std::set<std::string>& storageIDs) {
    std::vector<SessionSnapshot> sessions;
    for (const auto& id : storageIDs) {
        const auto query = database_.prepared("SELECT snapshot FROM sessions WHERE storage_id = ?");
        query->bind(1, id);
        for (auto& session : readSnapshots(query)) sessions.push_back(std::move(session));
    }
    return sessions;
}

// Ordered by `+number`: for `number` alone SQLite would step through all sessions in that order and
// leave the index of the time unused.
std::vector<SessionSnapshot> SessionStore::sessionsSeenSince(Instant time) {
    const auto query = database_.prepared(
        "SELECT snapshot FROM sessions WHERE last_seen_at >= ? ORDER BY +number");
    query->bind(1, storedForm(time));
    return readSnapshots(query);
}

std::vector<SessionSnapshot> SessionStore::sessionsThatWait(Instant seenSince) {
    const auto query = database_.prepared(
        "SELECT snapshot FROM sessions WHERE status = 'needsAttention' AND last_seen_at >= ?"
        " ORDER BY +number");
    query->bind(1, storedForm(seenSince));
    return readSnapshots(query);
}

std::vector<SessionSnapshot> SessionStore::sessionsAtWork(Instant seenSince) {
    const auto query = database_.prepared(
        "SELECT snapshot FROM sessions WHERE status = 'working' AND last_seen_at >= ?"
        " ORDER BY +number");
    query->bind(1, storedForm(seenSince));
    return readSnapshots(query);
}

std::vector<SessionSnapshot> SessionStore::completedSessions(Instant seenSince) {
    const auto query = database_.prepared(
        "SELECT snapshot FROM sessions WHERE last_seen_at >= ? AND +status = 'completed'"
        " ORDER BY +number");
    query->bind(1, storedForm(seenSince));
    return readSnapshots(query);
}

std::int64_t SessionStore::countOfSessionsSeenBefore(Instant time) {
    const auto countAll =
        database_.prepared("SELECT count(*) FROM sessions WHERE last_seen_at < ?");
    countAll->bind(1, storedForm(time));
    std::int64_t count = countAll->executeStep() ? countAll->getColumn(0).getInt64() : 0;
    // The setup's own are found by where their ids lie in the order of all: to look at the id of
    // every session would read the whole table.
    for (const auto provider : allCases<Provider>()) {
        const std::string first = SessionKey{provider, std::string{setupCheckPrefix}}.storageID();
        std::string behind = first;
        ++behind.back();
        const auto countOwn = database_.prepared(
            "SELECT count(*) FROM sessions"
            " WHERE storage_id >= ? AND storage_id < ? AND +last_seen_at < ?");
        countOwn->bind(1, first);
        countOwn->bind(2, behind);
        countOwn->bind(3, storedForm(time));
        if (countOwn->executeStep()) count -= countOwn->getColumn(0).getInt64();
    }
    return count;
}

std::int64_t SessionStore::addSession(const SessionSnapshot& snapshot) {
    const auto insert = database_.prepared(
        "INSERT INTO sessions (snapshot, last_seen_at, status, storage_id) VALUES (?, ?, ?, ?)");
    bindRecord(*insert, snapshot);
    insert->bind(4, snapshot.id());
    insert->exec();
    return database_.lastInsertedRow();
}

void SessionStore::updateSession(std::int64_t number, const SessionSnapshot& snapshot,
                                 std::optional<Instant> turnBeganAt) {
    const auto update = database_.prepared(
        "UPDATE sessions SET snapshot = ?, last_seen_at = ?, status = ?, turn_began_at = ?"
        " WHERE number = ?");
    bindRecord(*update, snapshot);
    if (turnBeganAt) update->bind(4, storedForm(*turnBeganAt));
    update->bind(5, number);
    update->exec();
}

void SessionStore::removeSession(const SessionKey& key) {
    const auto stored = session(key);
    if (!stored) return;
    PresenceStore{database_}.remove(key);
    // The events first: they refer to the session.
    for (const char* sql :
         {"DELETE FROM events WHERE session = ?", "DELETE FROM sessions WHERE number = ?"}) {
        const auto remove = database_.prepared(sql);
        remove->bind(1, stored->number);
        remove->exec();
    }
    const auto removeMark = database_.prepared("DELETE FROM session_marks WHERE session = ?");
    removeMark->bind(1, key.storageID());
    removeMark->exec();
}

}  // namespace tallowbrook::host
