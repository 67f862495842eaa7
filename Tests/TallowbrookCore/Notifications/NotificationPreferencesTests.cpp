#include "Notifications/NotificationPreferences.h"

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <limits>
#include <string>

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

TEST(QuietHours, mayCrossMidnight) {
    const QuietHours night{true, 1320, 420};
    EXPECT_TRUE(quietAt(night, 23, 30));
    EXPECT_TRUE(quietAt(night, 22, 0));
    EXPECT_TRUE(quietAt(night, 0, 0));
    EXPECT_TRUE(quietAt(night, 6, 59));
    EXPECT_FALSE(quietAt(night, 7, 0));
    EXPECT_FALSE(quietAt(night, 12, 0));
    EXPECT_FALSE(quietAt(night, 21, 59));
}

TEST(QuietHours, mayLieWithinOneDay) {
    const QuietHours office{true, 540, 1020};
    EXPECT_FALSE(quietAt(office, 8, 59));
    EXPECT_TRUE(quietAt(office, 9, 0));
    EXPECT_TRUE(quietAt(office, 16, 59));
    EXPECT_FALSE(quietAt(office, 17, 0));
    EXPECT_FALSE(quietAt(office, 23, 59));
}

TEST(QuietHours, maySpanAllButTheLastMinute) {
    const QuietHours nearlyAll{true, 0, 1439};
    EXPECT_TRUE(quietAt(nearlyAll, 0, 0));
    EXPECT_TRUE(quietAt(nearlyAll, 23, 58));
    EXPECT_FALSE(quietAt(nearlyAll, 23, 59));
}

TEST(QuietHours, countsWholeMinutes) {
    const QuietHours oneMinute{true, 600, 601};
    const Instant ten = midnight + std::chrono::hours{10};
    EXPECT_FALSE(oneMinute.contains(ten - std::chrono::microseconds{1}, utc));
    EXPECT_TRUE(oneMinute.contains(ten, utc));
    EXPECT_TRUE(oneMinute.contains(ten + std::chrono::seconds{59}, utc));
    EXPECT_FALSE(oneMinute.contains(ten + std::chrono::minutes{1}, utc));
}

TEST(QuietHours, isNeverInForceWhenDisabledOrEmpty) {
    for (int hour = 0; hour < 24; ++hour) {
        EXPECT_FALSE(quietAt(QuietHours(false, 1320, 420), hour, 0)) << hour;
        EXPECT_FALSE(quietAt(QuietHours(true, 600, 600), hour, 0)) << hour;
        EXPECT_FALSE(quietAt(QuietHours(true, 0, 1440), hour, 0)) << hour;
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
    const auto readWith = [&](const char* name, const boost::json::value& value) {
        object members = boost::json::parse(allOff).as_object();
        members[name] = value;
        return decodedObject(members);
    };
    EXPECT_EQ(readWith("enabled", true), NotificationPreferences{.enabled = true});
    EXPECT_EQ(readWith("paused", true), NotificationPreferences{.paused = true});
    EXPECT_EQ(readWith("notifyOnAttention", true),
              NotificationPreferences{.notifyOnAttention = true});
    EXPECT_EQ(readWith("notifyOnCompletion", true),
              NotificationPreferences{.notifyOnCompletion = true});
    EXPECT_EQ(readWith("notifyOnFailure", true), NotificationPreferences{.notifyOnFailure = true});
    EXPECT_EQ(readWith("dedupeInterval", 1.5),
              NotificationPreferences{.dedupeInterval = Seconds{1.5}});
    EXPECT_EQ(readWith("maxEventAge", 600), NotificationPreferences{.maxEventAge = Seconds{600}});
    EXPECT_EQ(readWith("playSound", true), NotificationPreferences{.playSound = true});
    EXPECT_EQ(
        readWith("quietHours", object{{"enabled", true}, {"startMinute", 1}, {"endMinute", 2}}),
        NotificationPreferences{.quietHours = QuietHours(true, 1, 2)});
}

TEST(NotificationPreferencesCoding, readsBackWhatItWrites) {
    NotificationPreferences preferences = samplePreferences();
    for (const double seconds : {0.0, 0.1, 1.0 / 3.0, 86400.0, 1e300, 5e-324, -1.0}) {
        preferences.dedupeInterval = Seconds{seconds};
        preferences.maxEventAge = Seconds{seconds * 0.5};
        const auto text = NotificationPreferencesCoding::encode(preferences);
        EXPECT_EQ(NotificationPreferencesCoding::decode(text), preferences) << text;
    }
}

TEST(NotificationPreferencesCoding, storesTheMinutesAsFound) {
    object members = encodedObject();
    members["quietHours"].as_object()["startMinute"] = -60;
    members["quietHours"].as_object()["endMinute"] = 1500;
    const auto preferences = decodedObject(members);
    ASSERT_TRUE(preferences);
    EXPECT_EQ(preferences->quietHours.startMinute, -60);
    EXPECT_EQ(preferences->quietHours.endMinute, 1500);
    EXPECT_EQ(
        NotificationPreferencesCoding::decode(NotificationPreferencesCoding::encode(*preferences)),
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

TEST(NotificationPreferencesCoding, failsOnAMemberOfAnotherType) {
    for (const char* name :
         {"enabled", "paused", "notifyOnAttention", "notifyOnCompletion", "notifyOnFailure",
          "playSound", "quietHours", "dedupeInterval", "maxEventAge"}) {
        for (const boost::json::value& value :
             {boost::json::value{"true"}, boost::json::value(boost::json::array{})}) {
            object members = encodedObject();
            members[name] = value;
            EXPECT_FALSE(decodedObject(members)) << name;
        }
    }
    for (const char* name : {"enabled", "paused", "playSound", "quietHours"}) {
        object members = encodedObject();
        members[name] = 1;
        EXPECT_FALSE(decodedObject(members)) << name;
    }
    for (const char* name : {"startMinute", "endMinute"}) {
        for (const boost::json::value& value : {boost::json::value(1.5), boost::json::value("1")}) {
            object members = encodedObject();
            members["quietHours"].as_object()[name] = value;
            EXPECT_FALSE(decodedObject(members)) << name;
        }
    }
}

TEST(NotificationPreferencesCoding, passesOverUnknownMembers) {
    object members = encodedObject();
    members["addedLater"] = 1;
    EXPECT_EQ(decodedObject(members), samplePreferences());
}

TEST(NotificationPreferencesCoding, failsOnWhatIsNoObject) {
    for (const char* text : {"", "null", "[]", "1", "{", "{}"})
        EXPECT_FALSE(NotificationPreferencesCoding::decode(text)) << text;
}

}  // namespace
}  // namespace tallowbrook
