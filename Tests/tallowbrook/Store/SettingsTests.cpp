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

TEST_F(StoredSettings, keepPreferencesUntilOthersAreSet) {
    NotificationPreferences preferences;
    preferences.enabled = true;
    preferences.quietHours = QuietHours{true, 1320, 420};
    preferences.dedupeInterval = Seconds{2.5};
    preferences.maxEventAge = Seconds{600};
    settings.setPreferences(preferences);
    EXPECT_EQ(settings.preferences(), preferences);

    preferences.paused = true;
    settings.setPreferences(preferences);
    Database next = home.open();
    EXPECT_EQ(Settings{next}.preferences(), preferences);
    EXPECT_EQ(home.rows("settings"), 1);
}

TEST_F(StoredSettings, thatCannotBeReadWereNeverStored) {
    settings.setPreferences({});
    settings.setReminderInterval(std::chrono::minutes{5});
    settings.setWaitingCycle({WaitingCycle::Pick{"claudeCode|S1", sampleTime}});
    settings.setIntegrationHealth(Provider::claudeCode, {sampleTime, sampleTime});
    for (const char* broken : {"", "{", "[]", "{}x", R"({"enabled":1,"at":1,"setUpAt":1})"}) {
        home.execute("UPDATE settings SET value = '" + std::string{broken} + "'");
        EXPECT_EQ(settings.preferences(), std::nullopt) << broken;
        EXPECT_EQ(settings.reminderInterval(), std::nullopt) << broken;
        EXPECT_EQ(settings.waitingCycle(), WaitingCycle{}) << broken;
        EXPECT_EQ(settings.integrationHealth(Provider::claudeCode), IntegrationHealthRecord{})
            << broken;
    }
}

TEST_F(StoredSettings, rememberWhatTheyAreGiven) {
    EXPECT_EQ(settings.reminderInterval(), std::nullopt);
    settings.setReminderInterval(std::chrono::minutes{0});
    EXPECT_EQ(settings.reminderInterval(), std::chrono::minutes{0});

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
