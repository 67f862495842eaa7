#include "Watch/Reminders.h"

#include <gtest/gtest.h>

#include "Preferences/HostSettings.h"
#include "StoreAtHome.h"
#include "Support/SampleSnapshots.h"

namespace tallowbrook::host {
namespace {

using std::chrono::minutes;

struct WaitingSession : testing::Test {
    StoreAtHome home;
    std::optional<EventStore> store = home.open();
    SessionSnapshot session = [] {
        SessionSnapshot waiting = minimalSnapshot();
        waiting.status = SessionStatus::needsAttention;
        waiting.attention = AttentionKind::permission;
        return waiting;
    }();
    std::int64_t number = store->addSession(session);
    Reminders reminders{minutes{10}, defaultPreferences(),
                        Calendar::fixed(std::chrono::minutes{0})};

    // How many reminders are in the outbox after looking at these minutes of waiting.
    int afterLookingAt(std::initializer_list<int> waited) {
        for (const int minute : waited)
            reminders.run(*store, session.statusSince + minutes{minute});
        return home.rows("notifications");
    }
};

TEST_F(WaitingSession, isRemindedOfEachTimeTheIntervalHasPassed) {
    EXPECT_EQ(afterLookingAt({0, 5, 9}), 0);
    EXPECT_EQ(afterLookingAt({10, 11, 19}), 1);
    EXPECT_EQ(afterLookingAt({20, 25}), 2);
    EXPECT_EQ(afterLookingAt({30}), 3);
    EXPECT_EQ(afterLookingAt({40, 50, 600}), 3);
}

TEST_F(WaitingSession, isNotRemindedOfAgainAfterARestart) {
    EXPECT_EQ(afterLookingAt({10}), 1);
    store.reset();
    store = home.open();
    EXPECT_EQ(afterLookingAt({10, 12}), 1);
    EXPECT_EQ(afterLookingAt({20}), 2);
}

TEST_F(WaitingSession, thatWaitedWhileNoHostRanIsRemindedOfOnceAtATime) {
    EXPECT_EQ(afterLookingAt({45, 46, 50, 54}), 1);
    EXPECT_EQ(afterLookingAt({55, 56}), 2);
}

TEST_F(WaitingSession, thatAsksAnewIsCountedAnew) {
    EXPECT_EQ(afterLookingAt({10, 20, 30, 40}), 3);
    session.statusSince += minutes{60};
    store->updateSession(number, session);
    EXPECT_EQ(afterLookingAt({5}), 3);
    EXPECT_EQ(afterLookingAt({10}), 4);
}

TEST_F(WaitingSession, isNotRemindedOfWhileTheUserWantsNone) {
    reminders.interval = minutes{0};
    EXPECT_EQ(afterLookingAt({10, 20, 600}), 0);
    reminders.interval = minutes{10};
    reminders.preferences.paused = true;
    EXPECT_EQ(afterLookingAt({10, 20}), 0);
    reminders.preferences.paused = false;
    EXPECT_EQ(afterLookingAt({21}), 1);
}

TEST_F(WaitingSession, ofTheSetupIsNobodysConcern) {
    session.key.sessionID = std::string{setupCheckPrefix} + "1";
    store->addSession(session);
    EXPECT_EQ(afterLookingAt({10}), 1);
}

}  // namespace
}  // namespace tallowbrook::host
