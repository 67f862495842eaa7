// What piled up while no host ran, told in one notification instead of many.
#pragma once

#include <optional>
#include <set>
#include <string>

#include "Notifications/Calendar.h"
#include "Notifications/NotificationPolicy.h"
#include "Store/Database.h"

namespace tallowbrook::host {

// "While you were away: 3 wait, 2 finished, 1 failed." of the sessions with these storage ids, as
// they are now; those that are at work again are left out. Absent when there is none to tell of,
// when the user wants to hear nothing now, or while the system has no random bytes for its id.
// Throws SQLite::Exception when the database fails.
std::optional<NotificationContent> awayNotification(const std::set<std::string>& sessions,
                                                    const NotificationPreferences& preferences,
                                                    Database& database, Instant now,
                                                    const Calendar& calendar);

}  // namespace tallowbrook::host
