// Points and spans of time as every record holds them, and their one text form.
//
// Pure functions; safe from any thread. None asks the C library for a calendar: that would open
// the time zone file, which costs a short-lived process more than all its other work.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace tallowbrook {

using Instant = std::chrono::sys_time<std::chrono::microseconds>;
using Seconds = std::chrono::duration<double>;

// Earlier than every real time: 0001-01-01T00:00:00Z.
inline constexpr Instant distantPast{std::chrono::sys_days{
    std::chrono::year_month_day{std::chrono::year{1}, std::chrono::month{1}, std::chrono::day{1}}}};

Instant currentInstant();

// The event date format: ISO 8601 in UTC with milliseconds, 2026-11-15T03:30:55.123Z.
namespace EventDate {

// Times below a millisecond are cut, not rounded. For the years 1 to 9999.
std::string text(Instant instant);

// Reads the form that `text` writes, or the same without the fraction. Absent for anything else:
// another count of fraction digits, another zone, an impossible day or hour.
std::optional<Instant> parse(std::string_view text);

}  // namespace EventDate
}  // namespace tallowbrook
