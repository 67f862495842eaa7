#include "HostSettings.h"

namespace tallowbrook::host {

NotificationPreferences defaultPreferences() {
    NotificationPreferences preferences;
    preferences.enabled = true;
    preferences.notifyOnAttention = true;
    preferences.notifyOnCompletion = true;
    preferences.notifyOnFailure = true;
    preferences.quietHours = QuietHours{false, 22 * 60, 7 * 60};
    preferences.dedupeInterval = Seconds{5};
    preferences.maxEventAge = Seconds{10 * 60};
    preferences.playSound = true;
    return preferences;
}

}  // namespace tallowbrook::host
