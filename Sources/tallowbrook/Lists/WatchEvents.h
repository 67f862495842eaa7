// What a host sees, as objects for programs: one compact JSON object (RFC 8259) a line.
//
// Used by one thread.
#pragma once

#include <map>
#include <string>

#include "Domain/Instant.h"
#include "Lists/SessionList.h"
#include "Notifications/NotificationPolicy.h"

namespace tallowbrook::host {

// "schema" is 1, "event" is "notification"; "at", "kind", "title", "body" and "session" (its id).
// With a line feed at its end.
std::string notificationEvent(const NotificationContent& content, Instant at);

// What has changed from list to list.
class SessionEvents {
 public:
    // A line for each session of the list that is new or differs from the one given last: "schema"
    // is 1, "event" is "session"; the other members are those of `SessionList::json`. Empty where
    // nothing has changed.
    std::string changes(const SessionList& list, Instant now);

 private:
    std::map<std::string, ListedSession> given_;  // by storage id
};

}  // namespace tallowbrook::host
