#include "Domain/Instant.h"

#include <gtest/gtest.h>

#include <string>

namespace tallowbrook {
namespace {

using std::chrono::microseconds;

// `micros` behind midnight of a day of the UTC calendar.
Instant instant(int year, unsigned month, unsigned day, std::int64_t micros = 0) {
    return Instant{std::chrono::sys_days{std::chrono::year_month_day{
               std::chrono::year{year}, std::chrono::month{month}, std::chrono::day{day}}}} +
           microseconds{micros};
}

constexpr std::int64_t second = 1'000'000;
constexpr std::int64_t hour = 3600 * second;
constexpr std::int64_t day = 24 * hour;

TEST(EventDate, isWrittenAndReadWithMilliseconds) {
    struct Row {
        const char* why;
        Instant instant;
        const char* text;
    };
    for (const auto& [why, instant, text] : {
             Row{"the start of counting", Instant{}, "1970-01-01T00:00:00.000Z"},
             Row{"an ordinary time", Instant{microseconds{1794713455123000}},
                 "2026-11-15T03:30:55.123Z"},
             Row{"a fraction of zero is written", instant(2026, 1, 2, hour),
                 "2026-01-02T01:00:00.000Z"},
             Row{"last millisecond of a year", instant(2026, 12, 31, day - 1000),
                 "2026-12-31T23:59:59.999Z"},
             Row{"leap day", instant(2024, 2, 29, 12 * hour), "2024-02-29T12:00:00.000Z"},
             Row{"just before counting starts", Instant{microseconds{-1000}},
                 "1969-12-31T23:59:59.999Z"},
             Row{"the distant past", distantPast, "0001-01-01T00:00:00.000Z"},
             Row{"the last time", instant(9999, 12, 31, day - 1000), "9999-12-31T23:59:59.999Z"},
         }) {
        EXPECT_EQ(EventDate::text(instant), text) << why;
        EXPECT_EQ(EventDate::parse(text), instant) << why;
        const auto withoutFraction = std::string{text}.substr(0, 19) + "Z";
        EXPECT_EQ(EventDate::parse(withoutFraction),
                  std::chrono::floor<std::chrono::seconds>(instant));
    }
}

TEST(EventDate, cutsWhatIsBelowAMillisecond) {
    struct Row {
        std::int64_t micros;
        const char* text;
    };
    for (const auto& [micros, text] : {
             Row{999, "1970-01-01T00:00:00.000Z"},
             Row{1000, "1970-01-01T00:00:00.001Z"},
             Row{-1, "1969-12-31T23:59:59.999Z"},
             Row{-1001, "1969-12-31T23:59:59.998Z"},
         }) {
        EXPECT_EQ(EventDate::text(Instant{microseconds{micros}}), text) << micros;
    }
    EXPECT_EQ(EventDate::text(instant(9999, 12, 31, day - 1)), "9999-12-31T23:59:59.999Z");
}

TEST(EventDate, refusesEveryOtherForm) {
    for (const char* text :
         {"", "Z", "2026-11-15", "2026-11-15T03:30Z", "2026-11-15T03:30:55", "2026-11-15 03:30:55",
          "2026-11-15T03:30:55.Z", "2026-11-15T03:30:55.12Z", "2026-11-15T03:30:55.1234Z",
          "2026-11-15T03:30:55.-12Z", "2026-11-15T03:30:55+00:00", "2026-11-15T03:30:55.123-0000",
          "2026-11-15T03:30:55.123ZZ", " 2026-11-15T03:30:55.123Z", "20261115T033055Z",
          "2026-11-15T24:00:00Z", "2026-11-15T23:60:00Z", "2026-12-31T23:59:60Z",
          "2026-11-5T03:30:55Z"})
        EXPECT_FALSE(EventDate::parse(text)) << text;
}

TEST(EventDate, refusesATextWithAnyCharacterReplaced) {
    const std::string valid = "2026-11-15T03:30:55.123Z";
    for (std::size_t i = 0; i < valid.size(); ++i)
        for (const char other : {'x', ' ', '/', '+', '\0', '\xFF'}) {
            std::string text = valid;
            text[i] = other;
            EXPECT_FALSE(EventDate::parse(text)) << i << " " << text;
        }
}

unsigned daysIn(int year, unsigned month) {
    if (month == 2) return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0) ? 29 : 28;
    return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

std::string padded(unsigned number, std::size_t length) {
    std::string text = std::to_string(number);
    return text.insert(0, length - text.size(), '0');
}

TEST(EventDate, readsExactlyTheDaysThatExist) {
    for (const int year : {1, 4, 100, 400, 1582, 1900, 1969, 1970, 2000, 2026, 2028, 2100, 9999}) {
        std::optional<Instant> dayBefore;
        for (unsigned month = 0; month <= 13; ++month) {
            const unsigned lastDay = month >= 1 && month <= 12 ? daysIn(year, month) : 0;
            for (unsigned number = 0; number <= 32; ++number) {
                const std::string text = padded(static_cast<unsigned>(year), 4) + "-" +
                                         padded(month, 2) + "-" + padded(number, 2) +
                                         "T00:00:00.000Z";
                const auto read = EventDate::parse(text);
                ASSERT_EQ(read.has_value(), number >= 1 && number <= lastDay) << text;
                if (!read) continue;
                EXPECT_EQ(EventDate::text(*read), text);
                if (dayBefore) {
                    EXPECT_EQ(*read - *dayBefore, microseconds{day}) << text;
                }
                dayBefore = read;
            }
        }
    }
    EXPECT_FALSE(EventDate::parse("0000-01-01T00:00:00.000Z")) << "there is no year 0";
}

}  // namespace
}  // namespace tallowbrook
