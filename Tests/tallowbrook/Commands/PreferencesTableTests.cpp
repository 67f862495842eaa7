#include <gtest/gtest.h>

#include "Commands/PreferencesCommand.h"
#include "Preferences/HostSettings.h"

namespace tallowbrook::host {
namespace {

TEST(PreferencesTable, hasALineForEachPreference) {
    NotificationPreferences preferences;
    preferences.paused = true;
    preferences.quietHours = QuietHours{true, 1275, 5};
    preferences.maxEventAge = Seconds{600};
    EXPECT_EQ(preferencesTable(preferences),
              "enabled              off          notifications at all\n"
              "paused               on           hold them back for now\n"
              "notifyOnAttention    off          when a session needs permission or input\n"
              "notifyOnCompletion   off          when a turn completes\n"
              "notifyOnFailure      off          when a turn fails\n"
              "quietHours           21:15-00:05  tell nothing in these hours, such as "
              "22:00-07:00\n"
              "dedupeInterval       0            seconds in which the same is told once\n"
              "maxEventAge          600          seconds after which an event is too old to tell\n"
              "playSound            off          with a sound\n");
}

TEST(PreferencesTable, showsLongIntervalsAsTheyAreSetToo) {
    for (const char* value : {"999999", "1000000", "31536000"}) {
        const auto preferences = setPreference(defaultPreferences(), "maxEventAge", value);
        ASSERT_TRUE(preferences) << value;
        const std::string table = preferencesTable(*preferences);
        EXPECT_NE(table.find("maxEventAge          " + std::string{value} + " "), std::string::npos)
            << table;
    }
}

TEST(SetPreference, knowsEverySwitchByItsField) {
    struct Row {
        const char* name;
        bool NotificationPreferences::* field;
    };
    for (const auto& [name, field] : {
             Row{"enabled", &NotificationPreferences::enabled},
             Row{"paused", &NotificationPreferences::paused},
             Row{"notifyOnAttention", &NotificationPreferences::notifyOnAttention},
             Row{"notifyOnCompletion", &NotificationPreferences::notifyOnCompletion},
             Row{"notifyOnFailure", &NotificationPreferences::notifyOnFailure},
             Row{"playSound", &NotificationPreferences::playSound},
         })
        for (const bool value : {true, false}) {
            auto expected = defaultPreferences();
            expected.*field = value;
            EXPECT_EQ(setPreference(defaultPreferences(), name, value ? "on" : "off"), expected)
                << name;
        }
}

}  // namespace
}  // namespace tallowbrook::host
