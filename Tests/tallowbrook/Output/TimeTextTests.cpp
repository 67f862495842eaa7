#include "Output/TimeText.h"

#include <gtest/gtest.h>
#include <time.h>

#include <chrono>

#include "Support/EnvironmentVariable.h"

namespace tallowbrook::host {
namespace {

using namespace std::chrono;

// The system's zone for as long as this value lives.
class TimeZone {
 public:
    explicit TimeZone(const std::string& zone) : variable_{"TZ", zone} { tzset(); }

 private:
    EnvironmentVariable variable_;
};

Instant at(int y, unsigned m, unsigned d, int hour, int minute, int second = 0) {
    return sys_days{year{y} / month{m} / day{d}} + hours{hour} + minutes{minute} + seconds{second};
}

TEST(TimeText, tellsTheLocalTimeOfDay) {
    const TimeZone zone{"EST5"};
    EXPECT_EQ(TimeText::timeOfDay(at(2026, 11, 21, 5, 0)), "00:00:00");
    EXPECT_EQ(TimeText::timeOfDay(at(2026, 11, 21, 4, 59, 59) + microseconds{999'999}), "23:59:59");
    EXPECT_EQ(TimeText::timeOfDay(at(2026, 11, 21, 19, 5, 9)), "14:05:09");
}

TEST(TimeText, addsTheDateToTimesOfOtherLocalDays) {
    const TimeZone zone{"EST5"};
    const Instant now = at(2026, 11, 21, 19, 5);
    struct Row {
        const char* why;
        Instant time;
        const char* expected;
    };
    for (const auto& [why, time, expected] : {
             Row{"now", now, "14:05"},
             Row{"the day's first minute", at(2026, 11, 21, 5, 0), "00:00"},
             Row{"the minute before", at(2026, 11, 21, 4, 59), "20 Nov 23:59"},
             Row{"the day's last minute", at(2026, 11, 22, 4, 59), "23:59"},
             Row{"tomorrow", at(2026, 11, 22, 5, 0), "22 Nov 00:00"},
             Row{"the year's first minute", at(2026, 1, 1, 5, 0), "1 Jan 00:00"},
             Row{"last year", at(2026, 1, 1, 4, 59), "31 Dec 2025 23:59"},
             Row{"the same day of another year", at(2025, 11, 21, 19, 5), "21 Nov 2025 14:05"},
         })
        EXPECT_EQ(TimeText::shortTime(time, now), expected) << why;
}

TEST(TimeText, countsAgesDownwards) {
    const Instant now = at(2026, 11, 21, 12, 0);
    struct Row {
        microseconds age;
        const char* expected;
    };
    const microseconds little{1};
    for (const auto& [age, expected] : {
             Row{hours{-5}, "just now"},
             Row{seconds{0}, "just now"},
             Row{minutes{1} - little, "just now"},
             Row{minutes{1}, "1 min ago"},
             Row{minutes{2} - little, "1 min ago"},
             Row{hours{1} - little, "59 min ago"},
             Row{hours{1}, "1 h ago"},
             Row{hours{2} - little, "1 h ago"},
             Row{hours{48} - little, "47 h ago"},
             Row{hours{48}, "2 days ago"},
             Row{hours{72} - little, "2 days ago"},
             Row{hours{24 * 400}, "400 days ago"},
         })
        EXPECT_EQ(TimeText::ago(now - age, now), expected) << age.count();
}

TEST(TimeText, tellsForHowLongSomethingHasBeenSo) {
    const Instant now = at(2026, 11, 21, 12, 0);
    struct Row {
        microseconds age;
        const char* expected;
        microseconds untilNext;
    };
    for (const auto& [age, expected, untilNext] : {
             Row{seconds{-30}, "<1 min", seconds{90}},
             Row{seconds{0}, "<1 min", minutes{1}},
             Row{seconds{90}, "1 min", seconds{30}},
             Row{minutes{59}, "59 min", minutes{1}},
             Row{minutes{61}, "1 h", minutes{59}},
             Row{hours{47} + minutes{30}, "47 h", minutes{30}},
             Row{hours{49}, "2 days", hours{23}},
         }) {
        EXPECT_EQ(TimeText::lasting(now - age, now), expected) << age.count();
        EXPECT_EQ(TimeText::nextChange(now - age, now), now + untilNext) << age.count();
    }
}

TEST(TimeText, saysSomethingElseFromItsNextChangeOnAndNotBefore) {
    const Instant since = at(2026, 11, 21, 12, 0);
    for (Instant now = since; now < since + hours{100};) {
        const Instant next = TimeText::nextChange(since, now);
        EXPECT_NE(TimeText::lasting(since, next), TimeText::lasting(since, now));
        EXPECT_EQ(TimeText::lasting(since, next - microseconds{1}), TimeText::lasting(since, now));
        now = next;
    }
}

}  // namespace
}  // namespace tallowbrook::host
