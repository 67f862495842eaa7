#include "Preferences/HostSettings.h"

namespace tallowbrook::host {

NotificationPreferences defaultPreferences() {
    NotificationPreferences preferences;
    preferences.enabled = true;
    preferences.notifyOnAttention = true;
    preferences.notifyOnCompletion = true;
    preferences.notifyOnFailure = true;
    // Ready to be switched on: 22:00 to 7:00.
    preferences.quietHours = QuietHours{false, 1320, 420};
    preferences.dedupeInterval = Seconds{5};
    preferences.maxEventAge = Seconds{10 * 60};
    preferences.playSound = true;
    return preferences;
}

}  // namespace tallowbrook::host
