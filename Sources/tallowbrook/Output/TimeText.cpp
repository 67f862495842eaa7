#include "Output/TimeText.h"

#include <fmt/core.h>

#include <array>
#include <chrono>
#include <ctime>

namespace tallowbrook::host {
namespace {

// Not std::chrono::current_zone, which GCC 12 lacks.
std::tm localTime(Instant instant) {
    // Not by the system clock's own conversion, whose nanoseconds cannot hold the distant past.
    const std::time_t seconds =
        std::chrono::floor<std::chrono::seconds>(instant).time_since_epoch().count();
    std::tm local{};
    localtime_r(&seconds, &local);
    return local;
}

constexpr std::array months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// An age is told in hours before that.
constexpr std::chrono::hours daysFrom{48};

}  // namespace

std::string TimeText::timeOfDay(Instant instant) {
    const std::tm local = localTime(instant);
    return fmt::format("{:02}:{:02}:{:02}", local.tm_hour, local.tm_min, local.tm_sec);
}

std::string TimeText::minuteOfDay(std::int64_t minute) {
    constexpr int minutesOfAnHour = 60;
    return fmt::format("{:02}:{:02}", minute / minutesOfAnHour, minute % minutesOfAnHour);
}

std::string TimeText::shortTime(Instant instant, Instant now) {
    const std::tm local = localTime(instant);
    const std::tm today = localTime(now);
    std::string time = fmt::format("{:02}:{:02}", local.tm_hour, local.tm_min);
    if (local.tm_year == today.tm_year && local.tm_yday == today.tm_yday) return time;
    const auto* month = months[static_cast<std::size_t>(local.tm_mon)];
    if (local.tm_year == today.tm_year) return fmt::format("{} {} {}", local.tm_mday, month, time);
    return fmt::format("{} {} {} {}", local.tm_mday, month, local.tm_year + 1900, time);
}

std::string TimeText::ago(Instant instant, Instant now) {
    if (now - instant < std::chrono::minutes{1}) return "just now";
    return lasting(instant, now) + " ago";
}

std::string TimeText::lasting(Instant since, Instant now) {
    using namespace std::chrono;
    const auto age = now - since;
    if (age < 1min) return "<1 min";
    if (age < 1h) return fmt::format("{} min", floor<minutes>(age).count());
    if (age < daysFrom) return fmt::format("{} h", floor<hours>(age).count());
    return fmt::format("{} days", floor<days>(age).count());
}

Instant TimeText::nextChange(Instant since, Instant now) {
    using namespace std::chrono;
    const auto age = now - since;
    if (age < 1min) return since + 1min;
    if (age < 1h) return since + floor<minutes>(age) + 1min;
    if (age < daysFrom) return since + floor<hours>(age) + 1h;
    return since + floor<days>(age) + days{1};
}

}  // namespace tallowbrook::host
