#include <gtest/gtest.h>

#include "Notifications/ReminderPolicy.h"
#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"
#include "Support/SampleSnapshots.h"

namespace tallowbrook {
namespace {

TEST(ReminderPolicyLinux, holdsAReminderBackWhileThereAreNoRandomBytesForItsId) {
    SessionSnapshot session = minimalSnapshot();
    session.status = SessionStatus::needsAttention;
    NotificationPreferences preferences;
    preferences.enabled = preferences.notifyOnAttention = true;
    const auto isDue = [&] {
        return ReminderPolicy::due(session, 0, Seconds{60}, preferences, after(60),
                                   Calendar::fixed(std::chrono::minutes{0}))
            .has_value();
    };
    EXPECT_TRUE(isDue());
    const auto seen = inChildProcess([&]() -> std::string {
        if (!refuseRandomBytes()) return notRefused;
        return isDue() ? "due" : "held back";
    });
    if (seen == notRefused) GTEST_SKIP() << notRefused;
    EXPECT_EQ(seen, "held back");
}

}  // namespace
}  // namespace tallowbrook
