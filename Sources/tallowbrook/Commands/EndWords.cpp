#include "Commands/EndWords.h"

#include <fmt/core.h>

#include "Output/TimeText.h"
#include "Preferences/TimeOfDay.h"
#include "Text/Digits.h"

namespace tallowbrook::host {
namespace {

using std::chrono::minutes;

constexpr minutes longest = std::chrono::days{365};

// "1h30m", "90m", "2d"; absent for anything else, for nothing, and for too much.
std::optional<minutes> span(std::string_view text) {
    minutes sum{0};
    while (!text.empty()) {
        const auto number = parseNumber<int>(takeDigits(text));
        if (!number || text.empty()) return std::nullopt;
        const minutes unit = text.front() == 'd'   ? std::chrono::days{1}
                             : text.front() == 'h' ? std::chrono::hours{1}
                             : text.front() == 'm' ? minutes{1}
                                                   : minutes{0};
        if (unit == minutes{0} || *number > longest / unit) return std::nullopt;
        sum += *number * unit;
        text.remove_prefix(1);
    }
    if (sum <= minutes{0} || sum > longest) return std::nullopt;
    return sum;
}

// When the clock shows this next; where it is changed meanwhile, an hour or so beside it.
Instant next(int minuteOfDay, Instant now, const Calendar& calendar) {
    constexpr int minutesOfADay = 24 * 60;
    const auto local = calendar.localTime(now);
    const int left =
        (minuteOfDay - (local.hour * 60 + local.minute) + minutesOfADay) % minutesOfADay;
    return std::chrono::floor<minutes>(now) + minutes{left > 0 ? left : minutesOfADay};
}

}  // namespace

std::expected<std::optional<Instant>, Sentence> endOf(const std::optional<std::string>& first,
                                                      const std::optional<std::string>& second,
                                                      Instant now, const Calendar& calendar) {
    if (!first) return std::nullopt;
    if (first == "until" && second)
        if (const auto minute = parseTimeOfDay(*second)) return next(*minute, now, calendar);
    if (first != "until" && (first == "for") == second.has_value())
        if (const auto wanted = span(second.value_or(*first))) return now + *wanted;
    return std::unexpected(
        Sentence{fmt::format("\"{}{}\" is no time: say such as 30m, 2h, 1h30m, 1d, or until 14:00",
                             *first, second ? " " + *second : "")});
}

std::string untilWords(std::optional<Instant> end, Instant now) {
    return end ? "until " + TimeText::shortTime(*end, now) : "until you say otherwise";
}

}  // namespace tallowbrook::host
