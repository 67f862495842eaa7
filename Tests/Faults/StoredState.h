// What the host's database holds, read from a copy: the next host finds the database as the last
// one left it, with the work that a crash leaves to whoever opens it.
#pragma once

#include <map>
#include <set>
#include <string>

#include "Domain/Instant.h"
#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook {

struct StoredState {
    bool isSound = true;                // by SQLite's own check
    std::multiset<std::string> events;  // the sessions of the events
    // The sessions of the notifications by their state, and when the told ones were.
    std::multiset<std::string> pending;
    std::multiset<std::string> dropped;
    std::multimap<std::string, Instant> told;

    // Empty when there is no database yet, or one without tables. No host runs meanwhile.
    static StoredState of(const TallowbrookPaths& paths);

    std::multiset<std::string> toldSessions() const;
};

}  // namespace tallowbrook
