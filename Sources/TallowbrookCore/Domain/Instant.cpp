#include "Domain/Instant.h"

#include "Text/Digits.h"

namespace tallowbrook {

Instant currentInstant() {
    return std::chrono::time_point_cast<std::chrono::microseconds>(
        std::chrono::system_clock::now());
}

namespace {

void writeDigits(std::string& text, std::size_t position, std::size_t count, unsigned value) {
    for (std::size_t i = count; i-- > 0; value /= 10)
        text[position + i] = static_cast<char>('0' + value % 10);
}

// Exactly `count` digits as a number.
std::optional<unsigned> readDigits(std::string_view text, std::size_t position, std::size_t count) {
    return parseNumber<unsigned>(text.substr(position, count));
}

constexpr std::string_view pattern = "0000-00-00T00:00:00";

bool hasPunctuation(std::string_view text) {
    for (std::size_t i = 0; i < pattern.size(); ++i)
        if (pattern[i] != '0' && text[i] != pattern[i]) return false;
    return true;
}

// The milliseconds of what stands behind the seconds: "Z" or ".123Z".
std::optional<unsigned> readFraction(std::string_view rest) {
    if (rest == "Z") return 0;
    if (rest.size() != 5 || rest.front() != '.' || rest.back() != 'Z') return std::nullopt;
    return readDigits(rest, 1, 3);
}

}  // namespace

std::string EventDate::text(Instant instant) {
    using namespace std::chrono;
    const auto whole = floor<milliseconds>(instant);
    const auto days = floor<std::chrono::days>(whole);
    const year_month_day date{days};
    const hh_mm_ss time{whole - days};

    std::string text{"0000-00-00T00:00:00.000Z"};
    writeDigits(text, 0, 4, static_cast<unsigned>(static_cast<int>(date.year())));
    writeDigits(text, 5, 2, static_cast<unsigned>(date.month()));
    writeDigits(text, 8, 2, static_cast<unsigned>(date.day()));
    writeDigits(text, 11, 2, static_cast<unsigned>(time.hours().count()));
    writeDigits(text, 14, 2, static_cast<unsigned>(time.minutes().count()));
    writeDigits(text, 17, 2, static_cast<unsigned>(time.seconds().count()));
    writeDigits(text, 20, 3, static_cast<unsigned>(time.subseconds().count()));
    return text;
}

std::optional<Instant> EventDate::parse(std::string_view text) {
    using namespace std::chrono;
    if (text.size() <= pattern.size() || !hasPunctuation(text)) return std::nullopt;
    const auto yearNumber = readDigits(text, 0, 4);
    const auto monthNumber = readDigits(text, 5, 2);
    const auto dayNumber = readDigits(text, 8, 2);
    const auto hour = readDigits(text, 11, 2);
    const auto minute = readDigits(text, 14, 2);
    const auto second = readDigits(text, 17, 2);
    const auto fraction = readFraction(text.substr(pattern.size()));
    if (!yearNumber || !monthNumber || !dayNumber || !hour || !minute || !second || !fraction)
        return std::nullopt;

    const year_month_day date{year{static_cast<int>(*yearNumber)}, month{*monthNumber},
                              day{*dayNumber}};
    // Year 0 lies before the distant past. A leap second is no time that a clock here can give.
    if (*yearNumber == 0 || !date.ok() || *hour > 23 || *minute > 59 || *second > 59)
        return std::nullopt;
    return Instant{sys_days{date}} + hours{*hour} + minutes{*minute} + seconds{*second} +
           milliseconds{*fraction};
}

}  // namespace tallowbrook
