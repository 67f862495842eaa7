// The values that the library leaves to its host.
#pragma once

#include "Domain/Instant.h"
#include "Notifications/NotificationPreferences.h"

namespace tallowbrook::host {

// A working session not heard of for longer is shown as stale.
inline constexpr Seconds staleAfter{15 * 60.0};

// The same event twice within this time is one.
inline constexpr Seconds duplicateWindow{2.0};

// Sessions not heard of for longer are left out of lists, unless all are asked for.
inline constexpr Seconds listedFor{24 * 60 * 60.0};

// An agent that was set up and of which nothing came for so long is called silent.
inline constexpr Seconds healthGracePeriod{10 * 60.0};

// Until the user chooses: how long a session waits before each reminder of it.
inline constexpr std::chrono::minutes defaultReminderInterval{10};

// Until the user chooses: everything is told, at any hour. The dedupe interval is shorter than the
// time a person takes to answer one permission request and be asked the next.
NotificationPreferences defaultPreferences();

}  // namespace tallowbrook::host
