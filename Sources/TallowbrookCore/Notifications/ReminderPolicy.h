// Decides when a session that keeps waiting for the user earns another reminder, and words it.
//
// Keeps nothing between calls: the host counts, for each session, the reminders it has delivered
// since the session's `statusSince`, and begins again at 0 when that changes. Safe from any thread.
#pragma once

#include <array>
#include <optional>

#include "Domain/Instant.h"
#include "Notifications/NotificationPolicy.h"

namespace tallowbrook::ReminderPolicy {

// A session earns no more than these in one waiting period.
inline constexpr int maxReminders = 3;

// The intervals that the host offers the user, in minutes.
inline constexpr std::array intervalChoices{5, 10, 15, 30};

// How many reminders a wait has earned, with one due every `interval`: 0 to `maxReminders`; 0
// unless both are positive. Ends the program when the quotient of the two is no 64-bit integer.
int earned(Seconds waited, Seconds interval);

// The reminder to deliver now; absent when none is due, or when the user wants to hear nothing now.
// `sent` is the count delivered in this waiting period. The notification bears a new id, since no
// event causes it; while the system has no random bytes for one, the reminder stays due. As
// `earned`, ends the program for an interval too short to divide by.
std::optional<NotificationContent> due(const SessionSnapshot& session, int sent, Seconds interval,
                                       const NotificationPreferences& preferences, Instant now,
                                       const Calendar& calendar);

}  // namespace tallowbrook::ReminderPolicy
