// What the user can choose: of the host itself, and all together.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "Domain/Instant.h"
#include "Notifications/NotificationPreferences.h"
#include "Preferences/ChannelChoice.h"
#include "Preferences/HostSettings.h"

namespace tallowbrook::host {

struct HostPreferences {
    // How long a session waits before each reminder of it: zero for no reminders, else one of
    // `ReminderPolicy::intervalChoices`.
    std::chrono::minutes reminderInterval = defaultReminderInterval;
    // A turn that took less is not told as finished: its user still looks at it.
    Seconds completionAfter = defaultCompletionAfter;
    ChannelChoice channels = {};
    // The program of the user's that is run for each notification, for /bin/sh; empty: none.
    std::string exec = {};
    // Also of a session whose terminal the user looks at.
    bool tellWhileLooking = false;
    // When a pause is over by itself; absent: when the user says so.
    std::optional<Instant> pausedUntil = {};
    bool operator==(const HostPreferences&) const = default;
};

// Until the user chooses: the defaults.
struct Preferences {
    NotificationPreferences notifications = defaultPreferences();
    HostPreferences host = {};
    bool operator==(const Preferences&) const = default;

    // Not paused any more where the pause has ended by `now`; its end is there only while it is to
    // come.
    Preferences asOf(Instant now) const;
};

}  // namespace tallowbrook::host
