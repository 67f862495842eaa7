// The values that the library leaves to its host: fixed ones, and what holds until the user
// chooses.
#pragma once

#include "Domain/Instant.h"
#include "Notifications/NotificationPreferences.h"

namespace tallowbrook::host {

// A working session not heard of for longer is shown as stale. A long build or test run between
// two events should not look like an agent that has stopped.
inline constexpr Seconds staleAfter{15 * 60.0};

// An event that comes twice within this time is one: an agent with our hooks in two of its files
// reports everything twice, almost at once.
inline constexpr Seconds duplicateWindow{2.0};

// Sessions not heard of for longer are left out of lists, unless all are asked for: the day's work
// is what a list is looked at for.
inline constexpr Seconds listedFor{24 * 60 * 60.0};

// An agent that was set up and of which nothing came for so long is called silent. Its user has
// the time to start it and to give it a first prompt.
inline constexpr Seconds healthGracePeriod{10 * 60.0};

// How long a session waits before each reminder of it: long enough to answer unasked.
inline constexpr std::chrono::minutes defaultReminderInterval{10};

// How long a turn takes that is told as finished: a user who waits longer has looked away.
inline constexpr Seconds defaultCompletionAfter{20.0};

// Everything is told, at any hour.
NotificationPreferences defaultPreferences();

}  // namespace tallowbrook::host
