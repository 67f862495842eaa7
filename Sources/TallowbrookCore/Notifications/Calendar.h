// The user's time of day, as quiet hours need it.
#pragma once

#include <chrono>
#include <functional>

#include "Domain/Instant.h"

namespace tallowbrook {

struct LocalTime {
    int hour = 0;    // 0 to 23
    int minute = 0;  // 0 to 59
    bool operator==(const LocalTime&) const = default;
};

struct Calendar {
    std::function<LocalTime(Instant)> localTime;

    // The system's time zone; a change of it is seen by the next call. Midnight where the system
    // cannot tell. From any thread, while none changes the environment.
    static Calendar current();

    // A clock that is always this far ahead of UTC, without daylight saving time.
    static Calendar fixed(std::chrono::minutes aheadOfUTC);
};

}  // namespace tallowbrook
