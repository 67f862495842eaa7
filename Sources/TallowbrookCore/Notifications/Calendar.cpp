#include "Notifications/Calendar.h"

#include <ctime>

namespace tallowbrook {

namespace {

LocalTime systemLocalTime(Instant instant) {
    const auto whole = std::chrono::floor<std::chrono::seconds>(instant);
    const auto seconds = static_cast<std::time_t>(whole.time_since_epoch().count());
    // localtime_r alone may keep the zone it met first, and the host outlives a journey.
    ::tzset();
    std::tm local{};
    if (::localtime_r(&seconds, &local) == nullptr) return {};
    return {.hour = local.tm_hour, .minute = local.tm_min};
}

}  // namespace

Calendar Calendar::current() { return {.localTime = systemLocalTime}; }

Calendar Calendar::fixed(std::chrono::minutes aheadOfUTC) {
    return {.localTime = [aheadOfUTC](Instant instant) -> LocalTime {
        const auto local = instant + aheadOfUTC;
        const auto midnight = std::chrono::floor<std::chrono::days>(local);
        const std::chrono::hh_mm_ss time{local - midnight};
        return {.hour = static_cast<int>(time.hours().count()),
                .minute = static_cast<int>(time.minutes().count())};
    }};
}

}  // namespace tallowbrook
