#include "Notifications/NotificationPreferences.h"

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <limits>
#include <string>
#include <vector>

namespace tallowbrook {
namespace {

using boost::json::object;

constexpr Instant midnight{std::chrono::sys_days{std::chrono::year{2026} / 11 / 15}};
const Calendar utc = Calendar::fixed(std::chrono::minutes{0});

bool quietAt(const QuietHours& quietHours, int hour, int minute) {
    return quietHours.contains(midnight + std::chrono::hours{hour} + std::chrono::minutes{minute},
                               utc);
}

TEST(QuietHours, bringsItsMinutesIntoTheDay) {
    struct Row {
        std::int64_t given;
        std::int64_t kept;
    };
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    for (const auto& [given, kept] :
         {Row{0, 0}, Row{1439, 1439}, Row{1440, 0}, Row{1500, 60}, Row{2880, 0}, Row{-1, 1439},
          Row{-60, 1380}, Row{-1440, 0}, Row{-1441, 1439}, Row{most, 1087}, Row{least, 352}}) {
        EXPECT_EQ(QuietHours(true, given, 5).startMinute, kept) << given;
        EXPECT_EQ(QuietHours(true, 5, given).endMinute, kept) << given;
    }
    EXPECT_TRUE(QuietHours(true, 1, 2).enabled);
    EXPECT_FALSE(QuietHours(false, 1, 2).enabled);
}

TEST(QuietHours, lastFromTheFirstMinuteUntilTheLastAlsoAcrossMidnight) {
    using std::chrono::hours, std::chrono::minutes, std::chrono::microseconds;
    struct Row {
        QuietHours quietHours;
        std::vector<Instant> inside;
        std::vector<Instant> outside;
    };
    const auto at = [](int hour, int minute) { return midnight + hours{hour} + minutes{minute}; };
    for (const auto& [quietHours, inside, outside] : {
             Row{{true, 1320, 420},
                 {at(22, 0), at(23, 30), at(0, 0), at(6, 59)},
                 {at(7, 0), at(12, 0), at(21, 59)}},
             Row{{true, 540, 1020},
                 {at(9, 0), at(16, 59), at(17, 0) - microseconds{1}},
                 {at(9, 0) - microseconds{1}, at(17, 0), at(23, 59)}},
             Row{{true, 0, 1439}, {at(0, 0), at(23, 58)}, {at(23, 59)}},
             Row{{false, 1320, 420}, {}, {at(23, 30), at(0, 0), at(7, 0)}},
             Row{{true, 600, 600}, {}, {at(9, 59), at(10, 0), at(10, 1)}},
             Row{{true, 0, 1440}, {}, {at(0, 0), at(12, 0), at(23, 59)}},
         }) {
        for (const Instant date : inside)
            EXPECT_TRUE(quietHours.contains(date, utc)) << EventDate::text(date);
        for (const Instant date : outside)
            EXPECT_FALSE(quietHours.contains(date, utc)) << EventDate::text(date);
    }
}

TEST(QuietHours, goesByTheCalendarOfTheUser) {
    const QuietHours night{true, 1320, 420};
    const Instant noon = midnight + std::chrono::hours{12};
    EXPECT_FALSE(night.contains(noon, utc));
    EXPECT_TRUE(night.contains(noon, Calendar::fixed(std::chrono::hours{11})));
    const Calendar nothingKnown{.localTime = [](Instant) { return LocalTime{}; }};
    EXPECT_TRUE(night.contains(noon, nothingKnown)) << "a missing hour counts as midnight";
}

TEST(QuietHours, comparesMinutesOutsideTheDayAsTheyWereStored) {
    QuietHours stored;
    stored.enabled = true;
    stored.startMinute = -60;
    stored.endMinute = 420;
    EXPECT_TRUE(quietAt(stored, 6, 59));
    EXPECT_FALSE(quietAt(stored, 23, 30));
    stored.startMinute = 1500;
    EXPECT_TRUE(quietAt(stored, 6, 59));
    EXPECT_FALSE(quietAt(stored, 7, 0));
    EXPECT_FALSE(quietAt(stored, 23, 59));
}

// Every value differs from its default.
NotificationPreferences samplePreferences() {
    return {
        .enabled = true,
        .paused = true,
        .notifyOnAttention = true,
        .notifyOnCompletion = true,
        .notifyOnFailure = true,
        .quietHours = {true, 1320, 420},
        .dedupeInterval = Seconds{30},
        .maxEventAge = Seconds{0.25},
        .playSound = true,
    };
}

object encodedObject() {
    return boost::json::parse(NotificationPreferencesCoding::encode(samplePreferences()))
        .as_object();
}

std::expected<NotificationPreferences, DecodingError> decodedObject(const object& members) {
    return NotificationPreferencesCoding::decode(boost::json::serialize(members));
}

TEST(NotificationPreferencesCoding, writesEveryFieldUnderItsName) {
    const object expected{
        {"enabled", true},
        {"paused", true},
        {"notifyOnAttention", true},
        {"notifyOnCompletion", true},
        {"notifyOnFailure", true},
        {"quietHours", object{{"enabled", true}, {"startMinute", 1320}, {"endMinute", 420}}},
        {"dedupeInterval", 30},
        {"maxEventAge", 0.25},
        {"playSound", true},
    };
    EXPECT_EQ(encodedObject(), expected);
}

TEST(NotificationPreferencesCoding, readsEachMemberIntoItsField) {
    const std::string allOff =
        R"({"enabled":false,"paused":false,"notifyOnAttention":false,"notifyOnCompletion":false,)"
        R"("notifyOnFailure":false,"quietHours":{"enabled":false,"startMinute":0,"endMinute":0},)"
        R"("dedupeInterval":0,"maxEventAge":0,"playSound":false})";
    EXPECT_EQ(NotificationPreferencesCoding::decode(allOff), NotificationPreferences{});
    using Preferences = NotificationPreferences;
    struct Row {
        const char* name;
        boost::json::value value;
        Preferences expected;
    };
    for (const auto& [name, value, expected] : {
             Row{"enabled", true, {.enabled = true}},
             Row{"paused", true, {.paused = true}},
             Row{"notifyOnAttention", true, {.notifyOnAttention = true}},
             Row{"notifyOnCompletion", true, {.notifyOnCompletion = true}},
             Row{"notifyOnFailure", true, {.notifyOnFailure = true}},
             Row{"quietHours",
                 object{{"enabled", true}, {"startMinute", 1}, {"endMinute", 2}},
                 {.quietHours = {true, 1, 2}}},
             Row{"dedupeInterval", 1.5, {.dedupeInterval = Seconds{1.5}}},
             Row{"maxEventAge", 600, {.maxEventAge = Seconds{600}}},
             Row{"playSound", true, {.playSound = true}},
             Row{"addedLater", 1, {}},
         }) {
        object members = boost::json::parse(allOff).as_object();
        members[name] = value;
        EXPECT_EQ(decodedObject(members), expected) << name;
    }
}

TEST(NotificationPreferencesCoding, readsBackWhatItWrites) {
    NotificationPreferences preferences = samplePreferences();
    for (const double seconds : {0.0, 0.1, 1.0 / 3.0, 86400.0, 1e300, 5e-324, -1.0}) {
        preferences.dedupeInterval = Seconds{seconds};
        preferences.maxEventAge = Seconds{seconds * 0.5};
        const auto text = NotificationPreferencesCoding::encode(preferences);
        EXPECT_EQ(NotificationPreferencesCoding::decode(text), preferences) << text;
    }
    // Only the constructor brings the minutes into the day.
    preferences.quietHours.startMinute = -60;
    preferences.quietHours.endMinute = 1500;
    EXPECT_EQ(
        NotificationPreferencesCoding::decode(NotificationPreferencesCoding::encode(preferences)),
        preferences);
}

TEST(NotificationPreferencesCoding, failsWithoutAnyOfItsMembers) {
    for (const char* name :
         {"enabled", "paused", "notifyOnAttention", "notifyOnCompletion", "notifyOnFailure",
          "quietHours", "dedupeInterval", "maxEventAge", "playSound"}) {
        object members = encodedObject();
        ASSERT_EQ(members.erase(name), 1) << name;
        EXPECT_FALSE(decodedObject(members)) << name;
        members[name] = nullptr;
        EXPECT_FALSE(decodedObject(members)) << name;
    }
    for (const char* name : {"enabled", "startMinute", "endMinute"}) {
        object members = encodedObject();
        ASSERT_EQ(members["quietHours"].as_object().erase(name), 1) << name;
        EXPECT_FALSE(decodedObject(members)) << name;
        members["quietHours"].as_object()[name] = nullptr;
        EXPECT_FALSE(decodedObject(members)) << name;
    }
}

TEST(NotificationPreferencesCoding, failsOnAMemberOfAnotherTypeAndOnWhatIsNoObject) {
    for (const char* name :
         {"enabled", "paused", "notifyOnAttention", "notifyOnCompletion", "notifyOnFailure",
          "playSound", "quietHours", "dedupeInterval", "maxEventAge"}) {
        object members = encodedObject();
        members[name] = "true";
        EXPECT_FALSE(decodedObject(members)) << name;
    }
    for (const char* name : {"enabled", "startMinute", "endMinute"}) {
        object members = encodedObject();
        members["quietHours"].as_object()[name] = 1.5;
        EXPECT_FALSE(decodedObject(members)) << name;
    }
    for (const char* text : {"", "null", "[]", "{"})
        EXPECT_FALSE(NotificationPreferencesCoding::decode(text)) << text;
}

}  // namespace
}  // namespace tallowbrook
