// Reminders of sessions that keep waiting for the user.
#pragma once

#include "Notifications/Calendar.h"
#include "Notifications/NotificationPreferences.h"
#include "Store/EventStore.h"

namespace tallowbrook::host {

struct Reminders {
    Seconds interval;  // zero or less: none
    NotificationPreferences preferences;
    Calendar calendar;

    // Puts a reminder that is due into the outbox, and counts it with it, in one transaction: so a
    // restart neither repeats nor loses one. Of a session that has earned several while no host
    // ran, one at a time, an interval apart. Throws SQLite::Exception when the store fails.
    void run(EventStore& store, Instant now) const;
};

}  // namespace tallowbrook::host
