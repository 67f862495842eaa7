#include "Preferences/HostSettings.h"

#include <gtest/gtest.h>

namespace tallowbrook::host {
namespace {

TEST(HostSettings, tellEverythingAtAnyHourUntilTheUserChooses) {
    const auto preferences = defaultPreferences();
    EXPECT_TRUE(preferences.enabled);
    EXPECT_FALSE(preferences.paused);
    EXPECT_TRUE(preferences.notifyOnAttention);
    EXPECT_TRUE(preferences.notifyOnCompletion);
    EXPECT_TRUE(preferences.notifyOnFailure);
    EXPECT_TRUE(preferences.playSound);
    const auto calendar = Calendar::fixed(std::chrono::minutes{0});
    for (int hour = 0; hour < 24; ++hour)
        EXPECT_FALSE(preferences.quietHours.contains(Instant{std::chrono::hours{hour}}, calendar));
}

TEST(HostSettings, haveQuietHoursForTheNightReadyToBeSwitchedOn) {
    auto quietHours = defaultPreferences().quietHours;
    quietHours.enabled = true;
    const auto calendar = Calendar::fixed(std::chrono::minutes{0});
    struct Row {
        std::chrono::minutes time;
        bool isQuiet;
    };
    using std::chrono::minutes;
    for (const auto& [time, isQuiet] :
         {Row{minutes{21 * 60 + 59}, false}, Row{minutes{22 * 60}, true}, Row{minutes{0}, true},
          Row{minutes{6 * 60 + 59}, true}, Row{minutes{7 * 60}, false}})
        EXPECT_EQ(quietHours.contains(Instant{time}, calendar), isQuiet) << time.count();
}

TEST(HostSettings, surviveTheStoresCoding) {
    const auto preferences = defaultPreferences();
    EXPECT_EQ(
        NotificationPreferencesCoding::decode(NotificationPreferencesCoding::encode(preferences)),
        preferences);
}

}  // namespace
}  // namespace tallowbrook::host
