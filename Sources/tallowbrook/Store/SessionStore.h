// The sessions and their events, as they lie in the database.
//
// A view of a `Database`, which must outlive it; made where it is needed. Throws SQLite::Exception
// when the database fails.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Domain/AgentEvent.h"
#include "SessionState/SessionReducer.h"
#include "Store/Database.h"

namespace tallowbrook::host {

struct StoredSession {
    std::int64_t number = 0;
    // Absent when what is stored cannot be read: the session then starts anew, under its number.
    std::optional<SessionSnapshot> snapshot;
    // When the prompt came of the turn that it is in; absent where that is not known.
    std::optional<Instant> turnBeganAt;
};

struct StoredEvent {
    AgentEvent event;
    EventEffect effect = EventEffect::noSession;
};

class SessionStore {
 public:
    explicit SessionStore(Database& database) : database_{database} {}

    // `line` is the event's JSON text, without a line feed. False when this event, by its id and
    // time, is there already; it is then left as it is.
    bool addEvent(const AgentEvent& event, std::string_view line,
                  std::optional<std::int64_t> session, EventEffect effect);
    std::int64_t eventCount();
    std::optional<Instant> newestEventAt();
    // The latest of a session, oldest first. What cannot be read is left out.
    std::vector<StoredEvent> latestEvents(const SessionKey& key, int atMost);

    std::optional<StoredSession> session(const SessionKey& key);
    // What cannot be read is left out of each of these.
    std::vector<SessionSnapshot> sessions();
    std::vector<SessionSnapshot> sessions(const std::set<std::string>& storageIDs);
    std::vector<SessionSnapshot> sessionsSeenSince(Instant time);
    std::vector<SessionSnapshot> sessionsThatWait(Instant seenSince);
    std::vector<SessionSnapshot> sessionsAtWork(Instant seenSince);
    std::vector<SessionSnapshot> completedSessions(Instant seenSince);
    // Without the setup's own.
    std::int64_t countOfSessionsSeenBefore(Instant time);

    std::int64_t addSession(const SessionSnapshot& snapshot);
    // Without a time, when its turn began is not known any more.
    void updateSession(std::int64_t number, const SessionSnapshot& snapshot,
                       std::optional<Instant> turnBeganAt = std::nullopt);
    // With its events and its mark; its notifications stay. Several statements: the caller's
    // transaction makes them one. Does nothing where there is no such session.
    void removeSession(const SessionKey& key);

 private:
    Database& database_;
};

}  // namespace tallowbrook::host
