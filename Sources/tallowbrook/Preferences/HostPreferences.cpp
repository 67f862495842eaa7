#include "Preferences/HostPreferences.h"

namespace tallowbrook::host {

Preferences Preferences::asOf(Instant now) const {
    auto preferences = *this;
    auto& until = preferences.host.pausedUntil;
    if (!preferences.notifications.paused) until.reset();
    if (until && *until <= now) {
        preferences.notifications.paused = false;
        until.reset();
    }
    return preferences;
}

}  // namespace tallowbrook::host
