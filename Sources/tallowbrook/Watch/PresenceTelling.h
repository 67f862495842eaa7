// What the user is told, or not told any more, because of what was found out about an agent.
#pragma once

#include <string>
#include <vector>

#include "Notifications/Calendar.h"
#include "Notifications/NotificationPreferences.h"
#include "SessionState/AgentPresence.h"
#include "Store/Database.h"

namespace tallowbrook::host {

struct PresenceTelling {
    NotificationPreferences preferences;
    Calendar calendar;
    std::vector<std::string> channels;

    // To be called once for what is new about a session, as it is stored. Gives up what is still to
    // be told of a session that waits no more, and tells of a turn that failed without an event, by
    // the policy for events. Throws SQLite::Exception when the database fails.
    void tell(const SessionSnapshot& session, const AgentPresence& presence, Database& database,
              Instant now) const;

 private:
    void tellFailure(const SessionSnapshot& session, const SessionSnapshot& shown,
                     Database& database, Instant now) const;
};

}  // namespace tallowbrook::host
