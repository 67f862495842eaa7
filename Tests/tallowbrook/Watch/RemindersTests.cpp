#include "Watch/Reminders.h"

#include <gtest/gtest.h>

#include "DatabaseAtHome.h"
#include "Preferences/HostSettings.h"
#include "Support/SampleSnapshots.h"

namespace tallowbrook::host {
namespace {

using std::chrono::minutes;

struct WaitingSession : testing::Test {
    DatabaseAtHome home;
    std::optional<Database> database = home.open();
    SessionSnapshot session = [] {
        SessionSnapshot waiting = minimalSnapshot();
        waiting.status = SessionStatus::needsAttention;
        waiting.attention = AttentionKind::permission;
        waiting.lastSeenAt = waiting.statusSince;
        return waiting;
    }();
    std::int64_t number = SessionStore{*database}.addSession(session);
    Reminders reminders{minutes{10}, defaultPreferences(),
                        Calendar::fixed(std::chrono::minutes{0})};

    // How many reminders are in the outbox after looking at these minutes of waiting.
    int afterLookingAt(std::initializer_list<int> waited) {
        for (const int minute : waited) {
            const Instant now = session.statusSince + minutes{minute};
            Outbox outbox{*database};
            for (const auto& due : reminders.look(*database, now).due)
                Reminders::tell(due, outbox, now, lines);
        }
        return home.rows("notifications");
    }

    // How many minutes after the wait began the next look is wanted, as seen at `waited`.
    std::optional<double> nextLookSeenAt(int waited) {
        const Instant now = session.statusSince + minutes{waited};
        const auto next = reminders.look(*database, now).next;
        if (!next) return std::nullopt;
        return std::chrono::duration<double, std::ratio<60>>(*next - session.statusSince).count();
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
    database.reset();
    database = home.open();
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
    SessionStore{*database}.updateSession(number, session);
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

TEST_F(WaitingSession, ofTheSetupEarnsNoReminder) {
    session.key.sessionID = std::string{setupCheckPrefix} + "1";
    SessionStore{*database}.addSession(session);
    EXPECT_EQ(afterLookingAt({10}), 1);
}

TEST_F(WaitingSession, thatNoListShowsAnyMoreEarnsNoReminder) {
    constexpr int day = 24 * 60;
    session.statusSince -= minutes{3 * day};
    EXPECT_EQ(afterLookingAt({4 * day + 1}), 0);
    EXPECT_EQ(afterLookingAt({4 * day}), 1);
}

TEST_F(WaitingSession, saysWhenToLookAgain) {
    EXPECT_EQ(nextLookSeenAt(0), 10);
    EXPECT_EQ(nextLookSeenAt(9), 10);
    afterLookingAt({10});
    EXPECT_EQ(nextLookSeenAt(10), 20);
    afterLookingAt({25});
    EXPECT_EQ(nextLookSeenAt(25), 35) << "an interval apart";
    afterLookingAt({35});
    EXPECT_EQ(nextLookSeenAt(35), std::nullopt) << "it has earned all";
}

TEST_F(WaitingSession, isLookedAtAgainWhenTheQuietHoursEnd) {
    // The wait begins at 3:30:55.
    reminders.preferences.quietHours = QuietHours{true, 3 * 60, 5 * 60};
    EXPECT_EQ(nextLookSeenAt(5), 10);
    EXPECT_EQ(afterLookingAt({10}), 0);
    EXPECT_EQ(reminders.look(*database, session.statusSince + minutes{10}).next,
              std::chrono::floor<minutes>(session.statusSince) + minutes{90});
    EXPECT_EQ(afterLookingAt({90}), 1);
}

TEST_F(WaitingSession, isNotLookedAtAgainWhileTheUserWantsNone) {
    reminders.preferences.notifyOnAttention = false;
    EXPECT_EQ(nextLookSeenAt(10), std::nullopt);
    reminders.interval = minutes{0};
    EXPECT_EQ(nextLookSeenAt(10), std::nullopt);
}

}  // namespace
}  // namespace tallowbrook::host
