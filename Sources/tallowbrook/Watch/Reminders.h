// Reminders of sessions that keep waiting for the user.
#pragma once

#include <optional>
#include <vector>

#include "Notifications/Calendar.h"
#include "Notifications/NotificationPreferences.h"
#include "Store/Outbox.h"

namespace tallowbrook::host {

struct DueReminder {
    SessionKey session;
    NotificationContent content;
    ReminderCount count;  // with this reminder
};

struct Reminders {
    Seconds interval;  // zero or less: none
    NotificationPreferences preferences;
    Calendar calendar;

    struct Outlook {
        std::vector<DueReminder> due;
        std::optional<Instant> next;  // when to look again unless something changes before
    };

    // Reads the sessions that wait and that a list shows by default: an older one earns no
    // reminder. Of a session that has earned several while no host ran, one at a time, an interval
    // apart. Throws SQLite::Exception when the database fails.
    Outlook look(Database& database, Instant now) const;

    // Puts one into the outbox and counts it. In one transaction of the caller's, a restart neither
    // repeats nor loses it.
    static void tell(const DueReminder& reminder, Outbox& outbox, Instant now,
                     const std::vector<std::string>& channels);

 private:
    std::optional<Instant> nextLook(const SessionSnapshot& session, const ReminderCount& count,
                                    Instant now) const;
};

}  // namespace tallowbrook::host
