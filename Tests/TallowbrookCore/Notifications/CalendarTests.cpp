#include "Notifications/Calendar.h"

#include <gtest/gtest.h>

#include "Support/EnvironmentVariable.h"
#include "Support/SampleSnapshots.h"

namespace tallowbrook {
namespace {

constexpr Instant midnight{std::chrono::sys_days{std::chrono::year{2026} / 11 / 15}};

TEST(Calendar, ofAFixedOffsetCountsFromItsOwnMidnight) {
    using std::chrono::minutes, std::chrono::microseconds;
    const Calendar utc = Calendar::fixed(minutes{0});
    EXPECT_EQ(utc.localTime(midnight), (LocalTime{0, 0}));
    EXPECT_EQ(utc.localTime(midnight - microseconds{1}), (LocalTime{23, 59}));
    EXPECT_EQ(utc.localTime(sampleTime), (LocalTime{3, 30}));
    EXPECT_EQ(utc.localTime(distantPast), (LocalTime{0, 0}));
    EXPECT_EQ(Calendar::fixed(minutes{330}).localTime(midnight), (LocalTime{5, 30}));
    EXPECT_EQ(Calendar::fixed(minutes{-480}).localTime(midnight), (LocalTime{16, 0}));
    EXPECT_EQ(Calendar::fixed(minutes{14 * 60}).localTime(sampleTime), (LocalTime{17, 30}));
}

TEST(Calendar, ofTheSystemFollowsItsTimeZone) {
    const Calendar calendar = Calendar::current();
    {
        const EnvironmentVariable zone{"TZ", "XXX-5:30"};
        EXPECT_EQ(calendar.localTime(sampleTime), (LocalTime{9, 0}));
        EXPECT_EQ(calendar.localTime(midnight - std::chrono::microseconds{1}), (LocalTime{5, 29}));
    }
    {
        const EnvironmentVariable zone{"TZ", "XXX+8"};
        EXPECT_EQ(calendar.localTime(sampleTime), (LocalTime{19, 30}));
    }
    {
        const EnvironmentVariable zone{"TZ", "UTC0"};
        EXPECT_EQ(calendar.localTime(sampleTime), (LocalTime{3, 30}));
        EXPECT_EQ(calendar.localTime(Instant{std::chrono::microseconds{-1}}), (LocalTime{23, 59}))
            << "before 1970 the second counts downwards too";
    }
}

TEST(Calendar, ofTheSystemKnowsDaylightSavingTime) {
    const EnvironmentVariable zone{"TZ", "CET-1CEST,M3.5.0,M10.5.0/3"};
    constexpr Instant noonInJuly{std::chrono::sys_days{std::chrono::year{2026} / 7 / 1} +
                                 std::chrono::hours{12}};
    EXPECT_EQ(Calendar::current().localTime(noonInJuly), (LocalTime{14, 0}));
    EXPECT_EQ(Calendar::current().localTime(sampleTime), (LocalTime{4, 30}));
}

}  // namespace
}  // namespace tallowbrook
