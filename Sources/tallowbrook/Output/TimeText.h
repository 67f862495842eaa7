// Words for points in time, in the local time zone of this process.
//
// Safe from any thread, while none changes the environment.
#pragma once

#include <cstdint>
#include <string>

#include "Domain/Instant.h"

namespace tallowbrook::host::TimeText {

// The local time of day, "14:05:09".
std::string timeOfDay(Instant instant);

// The same of a minute after midnight, without seconds: "07:00" of 420.
std::string minuteOfDay(std::int64_t minute);

// "14:05" for a time of the local day of `now`, else "21 Nov 14:05", and with the year
// "21 Nov 2025 14:05" in another year.
std::string shortTime(Instant instant, Instant now);

// "just now", "5 min ago", "3 h ago", "2 days ago".
std::string ago(Instant instant, Instant now);

// For how long something has been so: "<1 min", "5 min", "3 h", "2 days".
std::string lasting(Instant since, Instant now);

// When `ago` and `lasting` of this instant say something else than at `now`.
Instant nextChange(Instant since, Instant now);

}  // namespace tallowbrook::host::TimeText
