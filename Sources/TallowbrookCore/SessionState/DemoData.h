// A believable set of sessions and their events, for showing the system without any agent running.
//
// Made of hook payloads that take the road of real ones, so that it shows just what real events
// would. Pure but for the random ids of the events; safe from any thread.
#pragma once

#include <vector>

#include "Domain/AgentEvent.h"
#include "SessionState/SessionReducer.h"

namespace tallowbrook {

struct DemoData {
    struct Entry {
        AgentEvent event;
        EventEffect effect = EventEffect::noSession;
        SessionStatus statusAfter = SessionStatus::unknown;  // of the event's session
        bool operator==(const Entry&) const = default;
    };

    std::vector<SessionSnapshot> sessions;  // the one heard of last comes first
    std::vector<Entry> entries;             // oldest first
    bool operator==(const DemoData&) const = default;

    // Every time lies before `now`. Given the host's own threshold as `staleAfter` (not negative,
    // at most some centuries), one of the sessions always shows as stale. An event's id is nil
    // where the system has no random bytes.
    static DemoData make(Instant now, Seconds staleAfter);
};

}  // namespace tallowbrook
