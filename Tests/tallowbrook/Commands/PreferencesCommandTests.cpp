#include "Commands/PreferencesCommand.h"

#include <gtest/gtest.h>

#include "Preferences/HostSettings.h"

namespace tallowbrook::host {
namespace {

TEST(SetPreference, changesTheNamedFieldAndNoOther) {
    const auto before = defaultPreferences();

    auto expected = before;
    expected.paused = true;
    EXPECT_EQ(setPreference(before, "paused", "on"), expected);

    expected = before;
    expected.notifyOnCompletion = false;
    EXPECT_EQ(setPreference(before, "notifyOnCompletion", "off"), expected);

    expected = before;
    expected.maxEventAge = Seconds{90};
    EXPECT_EQ(setPreference(before, "maxEventAge", "90"), expected);
}

TEST(SetPreference, takesQuietHoursAsATimeSpanOrASwitch) {
    auto preferences = setPreference(defaultPreferences(), "quietHours", "21:30-06:05").value();
    EXPECT_EQ(preferences.quietHours, QuietHours(true, 1290, 365));

    preferences = setPreference(preferences, "quietHours", "off").value();
    EXPECT_EQ(preferences.quietHours, QuietHours(false, 1290, 365)) << "the span is kept";
    preferences = setPreference(preferences, "quietHours", "on").value();
    EXPECT_EQ(preferences.quietHours, QuietHours(true, 1290, 365));
}

TEST(SetPreference, refusesValuesThatDoNotFit) {
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
         }) {
        EXPECT_EQ(setPreference(defaultPreferences(), name, value),
                  std::unexpected("\"" + std::string{value} + "\" is no value for " + name + "."));
    }
    EXPECT_TRUE(setPreference(defaultPreferences(), "dedupeInterval", "31536000"));
    EXPECT_TRUE(setPreference(defaultPreferences(), "dedupeInterval", "0"));
}

TEST(SetPreference, refusesAnUnknownName) {
    EXPECT_EQ(setPreference(defaultPreferences(), "volume", "on"),
              std::unexpected(std::string{"There is no preference named \"volume\"."}));
}

TEST(PreferencesTable, showsEveryValueAsItIsSet) {
    for (const auto* value : {"off", "22:15-06:45"}) {
        const auto preferences = setPreference(defaultPreferences(), "quietHours", value).value();
        EXPECT_NE(preferencesTable(preferences).find("quietHours           " + std::string{value}),
                  std::string::npos)
            << preferencesTable(preferences);
    }
    EXPECT_NE(preferencesTable(defaultPreferences()).find("maxEventAge          600 "),
              std::string::npos);
}

}  // namespace
}  // namespace tallowbrook::host
