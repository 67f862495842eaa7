#include "Watch/Hold.h"

#include <chrono>

namespace tallowbrook::host {

std::optional<Hold> holdAt(Instant now, const Preferences& preferences, const Calendar& calendar) {
    const auto& wanted = preferences.notifications;
    if (wanted.paused) return Hold{preferences.host.pausedUntil};
    if (wanted.quietHours.contains(now, calendar))
        return Hold{endOf(wanted.quietHours, now, calendar)};
    return std::nullopt;
}

Instant endOf(const QuietHours& hours, Instant now, const Calendar& calendar) {
    constexpr int minutesOfADay = 24 * 60;
    const auto local = calendar.localTime(now);
    const int minute = local.hour * 60 + local.minute;
    const auto left = (static_cast<int>(hours.endMinute) - minute + minutesOfADay) % minutesOfADay;
    // From the start of this minute: an hour of the day begins with a whole minute everywhere.
    return std::chrono::floor<std::chrono::minutes>(now) +
           std::chrono::minutes{left > 0 ? left : minutesOfADay};
}

}  // namespace tallowbrook::host
