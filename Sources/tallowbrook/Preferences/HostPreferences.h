// What the user can choose: of the host itself, and all together.
#pragma once

#include <chrono>

#include "Notifications/NotificationPreferences.h"
#include "Preferences/ChannelChoice.h"
#include "Preferences/HostSettings.h"

namespace tallowbrook::host {

struct HostPreferences {
    // How long a session waits before each reminder of it: zero for no reminders, else one of
    // `ReminderPolicy::intervalChoices`.
    std::chrono::minutes reminderInterval = defaultReminderInterval;
    ChannelChoice channels = {};
    bool operator==(const HostPreferences&) const = default;
};

// Until the user chooses: the defaults.
struct Preferences {
    NotificationPreferences notifications = defaultPreferences();
    HostPreferences host = {};
    bool operator==(const Preferences&) const = default;
};

}  // namespace tallowbrook::host
