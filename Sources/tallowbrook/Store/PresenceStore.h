// What the host last knew of the agents behind sessions, a row a session. It outlives what it was
// learned from: an agent that was killed leaves notes that the next one clears away.
//
// A view of a `Database`, which must outlive it; made where it is needed. Throws SQLite::Exception
// when the database fails.
#pragma once

#include <optional>
#include <set>
#include <string>

#include "SessionState/AgentPresence.h"
#include "Store/Database.h"

namespace tallowbrook::host {

class PresenceStore {
 public:
    explicit PresenceStore(Database& database) : database_{database} {}

    // Absent also where what is stored cannot be read.
    std::optional<AgentPresence> presence(const SessionKey& key);
    void set(const SessionKey& key, const AgentPresence& presence);
    void remove(const SessionKey& key);

    // Of the sessions heard of since then.
    AgentPresences ofSessionsSeenSince(Instant time);

    // The sessions, by storage id, whose agent was last seen waiting.
    std::set<std::string> waiting();

 private:
    Database& database_;
};

}  // namespace tallowbrook::host
