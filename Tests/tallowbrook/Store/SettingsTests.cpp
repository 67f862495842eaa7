#include "Store/Settings.h"

#include <gtest/gtest.h>

#include "DatabaseAtHome.h"

namespace tallowbrook::host {
namespace {

struct StoredSettings : testing::Test {
    DatabaseAtHome home;
    Database database = home.open();
    Settings settings{database};
};

Preferences someChosen() {
    Preferences preferences;
    preferences.notifications.paused = true;
    preferences.notifications.quietHours = QuietHours{true, 1320, 420};
    preferences.notifications.dedupeInterval = Seconds{2.5};
    preferences.host.reminderInterval = std::chrono::minutes{0};
    preferences.host.channels = {{"desktop", "lines"}};
    preferences.host.exec = "push \"it\"";
    preferences.host.tellWhileLooking = true;
    preferences.host.pausedUntil = sampleTime;
    return preferences;
}

TEST_F(StoredSettings, keepPreferencesUntilOthersAreSet) {
    EXPECT_EQ(settings.preferences(), Preferences{});
    settings.setPreferences({});
    settings.setPreferences(someChosen());
    Database next = home.open();
    EXPECT_EQ(Settings{next}.preferences(), someChosen());
}

TEST_F(StoredSettings, keepWhereTheHelpersLogWasToldUpTo) {
    EXPECT_EQ(settings.toldOfHelperLog(), std::nullopt);
    const Settings::LogPlace place{120, "2025-11-15T14:05:55.123Z helper: a line"};
    settings.setToldOfHelperLog(place);
    EXPECT_EQ(settings.toldOfHelperLog(), place);
    home.execute("UPDATE settings SET value = 'broken'");
    EXPECT_EQ(settings.toldOfHelperLog(), std::nullopt);
}

TEST_F(StoredSettings, thatCannotBeReadWereNeverStored) {
    settings.setPreferences(someChosen());
    settings.setWaitingCycle({WaitingCycle::Pick{"claudeCode|S1", sampleTime}});
    settings.setIntegrationHealth(Provider::claudeCode, {sampleTime, sampleTime});
    for (const char* broken : {"", "{", "[]", "{}x", R"({"enabled":1,"at":1,"setUpAt":1})"}) {
        home.execute("UPDATE settings SET value = '" + std::string{broken} + "'");
        EXPECT_EQ(settings.preferences(), Preferences{}) << broken;
        EXPECT_EQ(settings.waitingCycle(), WaitingCycle{}) << broken;
        EXPECT_EQ(settings.integrationHealth(Provider::claudeCode), IntegrationHealthRecord{})
            << broken;
    }
}

TEST_F(StoredSettings, rememberWhatTheyAreGiven) {
    const Mutes mutes{{{MuteScope::session, "claudeCode|S1", sampleTime}}};
    settings.setMutes(mutes);
    EXPECT_EQ(settings.mutes(), mutes);
    const WaitingCycle cycle{WaitingCycle::Pick{"claudeCode|S1", sampleTime}};
    settings.setWaitingCycle(cycle);
    EXPECT_EQ(settings.waitingCycle(), cycle);
    settings.setWaitingCycle({});
    EXPECT_EQ(settings.waitingCycle(), WaitingCycle{});

    settings.setIntegrationHealth(Provider::codexCLI, {sampleTime, std::nullopt});
    EXPECT_EQ(settings.integrationHealth(Provider::codexCLI).setUpAt, sampleTime);
    EXPECT_EQ(settings.integrationHealth(Provider::claudeCode), IntegrationHealthRecord{});
}

}  // namespace
}  // namespace tallowbrook::host
