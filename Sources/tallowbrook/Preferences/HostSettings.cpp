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
    // Shorter than the time a person takes to answer one permission request and be asked the next.
    preferences.dedupeInterval = Seconds{1};
    // What happened before a machine slept, or before the host was started, is no news.
    preferences.maxEventAge = Seconds{10 * 60};
    preferences.playSound = true;
    return preferences;
}

}  // namespace tallowbrook::host
