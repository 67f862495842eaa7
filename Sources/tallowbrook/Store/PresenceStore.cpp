#include "Store/PresenceStore.h"

namespace tallowbrook::host {
namespace {

// Of the columns state, evidence, since, judged_at, pid, process_start, lock_was_held, from
// `first` on.
std::optional<AgentPresence> readPresence(SQLite::Statement& query, int first) {
    const auto state = fromRawValue<AgentState>(query.getColumn(first).getString());
    const auto evidence = fromRawValue<AgentEvidence>(query.getColumn(first + 1).getString());
    if (!state || !evidence) return std::nullopt;
    AgentPresence presence{.state = *state,
                           .evidence = *evidence,
                           .since = instantOf(query.getColumn(first + 2)),
                           .judgedAt = instantOf(query.getColumn(first + 3)),
                           .process = std::nullopt,
                           .lockWasHeld = query.getColumn(first + 6).getInt() != 0};
    if (!query.getColumn(first + 4).isNull())
        presence.process = ProcessIdentity{query.getColumn(first + 4).getInt(),
                                           query.getColumn(first + 5).getInt64()};
    return presence;
}

}  // namespace

std::optional<AgentPresence> PresenceStore::presence(const SessionKey& key) {
    const auto query = database_.prepared(
        "SELECT state, evidence, since, judged_at, pid, process_start, lock_was_held"
        " FROM presence WHERE session = ?");
    query->bind(1, key.storageID());
    if (!query->executeStep()) return std::nullopt;
    return readPresence(*query, 0);
}

void PresenceStore::set(const SessionKey& key, const AgentPresence& presence) {
    const auto insert = database_.prepared(
        "INSERT OR REPLACE INTO presence (session, state, evidence, since, judged_at, pid,"
        " process_start, lock_was_held) VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
    insert->bind(1, key.storageID());
    insert->bind(2, std::string{rawValue(presence.state)});
    insert->bind(3, std::string{rawValue(presence.evidence)});
    insert->bind(4, storedForm(presence.since));
    insert->bind(5, storedForm(presence.judgedAt));
    if (presence.process) {
        insert->bind(6, presence.process->pid);
        insert->bind(7, presence.process->start);
    }
    insert->bind(8, presence.lockWasHeld ? 1 : 0);
    insert->exec();
}

void PresenceStore::remove(const SessionKey& key) {
    const auto remove = database_.prepared("DELETE FROM presence WHERE session = ?");
    remove->bind(1, key.storageID());
    remove->exec();
}

AgentPresences PresenceStore::ofSessionsSeenSince(Instant time) {
    const auto query = database_.prepared(
        "SELECT session, state, evidence, since, judged_at, pid, process_start, lock_was_held"
        " FROM sessions JOIN presence ON session = storage_id WHERE last_seen_at >= ?");
    query->bind(1, storedForm(time));
    AgentPresences presences;
    while (query->executeStep())
        if (auto presence = readPresence(*query, 1))
            presences.emplace(query->getColumn(0).getString(), *presence);
    return presences;
}

std::set<std::string> PresenceStore::waiting() {
    const auto query = database_.prepared("SELECT session FROM presence WHERE state = 'waiting'");
    std::set<std::string> sessions;
    while (query->executeStep()) sessions.insert(query->getColumn(0).getString());
    return sessions;
}

}  // namespace tallowbrook::host
