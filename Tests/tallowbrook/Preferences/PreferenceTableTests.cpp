#include "Preferences/PreferenceTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace tallowbrook::host {
namespace {

using std::chrono::minutes;

std::string shown(const Preferences& preferences, std::string_view name) {
    const auto rows = preferenceRows();
    const auto row = std::ranges::find(rows, name, &PreferenceRow::name);
    return row == rows.end() ? "no such row" : row->show(preferences);
}

TEST(PreferenceTable, changesTheNamedFieldAloneAndShowsItAsItIsSet) {
    struct Row {
        const char* name;
        const char* value;
        std::function<void(Preferences&)> change;
    };
    for (const auto& [name, value, change] : {
             Row{"enabled", "off", [](auto& to) { to.notifications.enabled = false; }},
             Row{"paused", "on", [](auto& to) { to.notifications.paused = true; }},
             Row{"notifyOnAttention", "off",
                 [](auto& to) { to.notifications.notifyOnAttention = false; }},
             Row{"notifyOnCompletion", "off",
                 [](auto& to) { to.notifications.notifyOnCompletion = false; }},
             Row{"notifyOnFailure", "off",
                 [](auto& to) { to.notifications.notifyOnFailure = false; }},
             Row{"quietHours", "21:30-06:05",
                 [](auto& to) { to.notifications.quietHours = QuietHours{true, 1290, 365}; }},
             Row{"dedupeInterval", "0",
                 [](auto& to) { to.notifications.dedupeInterval = Seconds{0}; }},
             Row{"maxEventAge", "31536000",
                 [](auto& to) { to.notifications.maxEventAge = Seconds{31'536'000}; }},
             Row{"maxEventAge", "999999",
                 [](auto& to) { to.notifications.maxEventAge = Seconds{999'999}; }},
             Row{"playSound", "off", [](auto& to) { to.notifications.playSound = false; }},
             Row{"completionAfter", "0", [](auto& to) { to.host.completionAfter = Seconds{0}; }},
             Row{"completionAfter", "31536000",
                 [](auto& to) { to.host.completionAfter = Seconds{31'536'000}; }},
             Row{"reminderInterval", "off",
                 [](auto& to) { to.host.reminderInterval = minutes{0}; }},
             Row{"reminderInterval", "30",
                 [](auto& to) { to.host.reminderInterval = minutes{30}; }},
             Row{"channels", "lines,desktop",
                 [](auto& to) { to.host.channels = {{"lines", "desktop"}}; }},
             Row{"exec", "~/bin/push --to 'my phone' | cat",
                 [](auto& to) { to.host.exec = "~/bin/push --to 'my phone' | cat"; }},
             Row{"tellWhileLooking", "on", [](auto& to) { to.host.tellWhileLooking = true; }},
         }) {
        Preferences expected;
        change(expected);
        ASSERT_NE(expected, Preferences{}) << name;
        EXPECT_EQ(setPreference({}, name, value), expected) << name;
        EXPECT_EQ(shown(expected, name), value);
    }
}

TEST(PreferenceTable, switchesQuietHoursWithoutForgettingThem) {
    auto preferences = setPreference({}, "quietHours", "21:30-06:05").value();
    preferences = setPreference(preferences, "quietHours", "off").value();
    EXPECT_EQ(shown(preferences, "quietHours"), "off");
    preferences = setPreference(preferences, "quietHours", "on").value();
    EXPECT_EQ(shown(preferences, "quietHours"), "21:30-06:05");
}

TEST(PreferenceTable, refusesValuesThatDoNotFit) {
    struct Row {
        const char* name;
        const char* value;
    };
    for (const auto& [name, value] : {
             Row{"enabled", "yes"},
             Row{"enabled", ""},
             Row{"enabled", "On"},
             Row{"quietHours", "22:00"},
             Row{"quietHours", "22:00-24:00"},
             Row{"quietHours", "22:60-07:00"},
             Row{"quietHours", "22:00-22:00"},
             Row{"quietHours", "22:00-7:00"},
             Row{"quietHours", "2a:00-07:00"},
             Row{"dedupeInterval", "-1"},
             Row{"dedupeInterval", "5s"},
             Row{"dedupeInterval", "31536001"},
             Row{"maxEventAge", "99999999999999"},
             Row{"maxEventAge", ""},
             Row{"completionAfter", "off"},
             Row{"reminderInterval", "7"},
             Row{"reminderInterval", "0"},
             Row{"reminderInterval", "10 "},
             Row{"channels", ""},
             Row{"channels", "desktop,"},
             Row{"channels", "desktop, lines"},
             Row{"channels", "desktop,desktop"},
             Row{"channels", "auto,desktop"},
             Row{"channels", "pigeon"},
         }) {
        EXPECT_EQ(setPreference({}, name, value),
                  std::unexpected(
                      Sentence{"\"" + std::string{value} + "\" is no value for " + name + "."}));
    }
    const auto mute = setPreference({}, "maxEventAge", "0");
    ASSERT_FALSE(mute);
    EXPECT_TRUE(mute.error().text().starts_with("With maxEventAge 0 nothing would ever be told"));
    EXPECT_EQ(setPreference({}, "volume", "on"),
              std::unexpected(Sentence{"There is no preference named \"volume\"."}));
}

}  // namespace
}  // namespace tallowbrook::host
