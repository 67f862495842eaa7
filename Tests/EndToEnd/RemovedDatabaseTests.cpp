// `watch` under which the database, or the whole home, is taken away: it goes on with a new one,
// and stores there what comes.
#include <SQLiteCpp/Exception.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "EventBridge/SpoolDrainer.h"
#include "Support/WaitUntil.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;

const std::string leads = "No sessions to show.";
const std::string follows = "Another host watches this home already.";
const std::string isGone = " was removed or replaced while it was in use; ";

void removeDatabase(const TestHome& home) {
    for (const char* companion : {"", "-wal", "-shm"})
        std::filesystem::remove(home.paths.databaseFile().string() + companion);
}

bool isStored(const TestHome& home, int events) {
    try {
        return home.rows("events") == events;
    } catch (const SQLite::Exception&) {  // it is being made
        return false;
    }
}

TEST(RemovedDatabase, isBegunAnewByARunningHost) {
    const TestHome home;
    home.claude("SessionStart", "before");
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput("before"));
    removeDatabase(home);
    home.claude("PermissionRequest", "after");
    ASSERT_TRUE(host.waitForOutput("needs permission"));
    home.claude("Stop", "after");
    ASSERT_TRUE(host.waitForOutput("finished"));
    host.send(SIGTERM);
    const auto result = host.wait();
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, HasSubstr(home.paths.databaseFile().string() + isGone));
    EXPECT_EQ(home.rows("events"), 2);
    EXPECT_EQ(SpoolDrainer{home.paths}.pendingSegmentCount(), 0);
}

TEST(RemovedDatabase, keepsWhatWasJustClaimedForTheNewOne) {
    const TestHome home;
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput(leads));
    // Standing still, so that the event is there before the host can look.
    host.send(SIGSTOP);
    home.claude("Stop", "S1");
    removeDatabase(home);
    host.send(SIGCONT);
    waitUntil([&] { return isStored(home, 1); });
    EXPECT_TRUE(isStored(home, 1));
}

TEST(RemovedDatabase, thatAnotherOneReplacedIsLeftForThatOne) {
    const TestHome home;
    const TestHome other;
    other.claude("Stop", "elsewhere");
    ASSERT_EQ(other.host({"watch", "--once"}).status, 0);
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput(leads));
    host.send(SIGSTOP);
    removeDatabase(home);
    copy_file(other.paths.databaseFile(), home.paths.databaseFile());
    home.claude("Stop", "S1");
    host.send(SIGCONT);
    waitUntil([&] { return isStored(home, 2); });
    EXPECT_TRUE(isStored(home, 2));
}

TEST(RemovedHome, isMadeAnewByARunningHostThatStillKeepsOthersAway) {
    const TestHome home;
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput(leads));
    for (int round = 1; round <= 2; ++round) {
        const auto session = "S" + std::to_string(round);
        host.send(SIGSTOP);
        std::filesystem::remove_all(home.paths.home);
        home.claude("PermissionRequest", session);
        host.send(SIGCONT);
        waitUntil([&] { return isStored(home, 1); });
        EXPECT_TRUE(isStored(home, 1)) << round;
    }
    EXPECT_THAT(home.host({"watch", "--once"}).errors, HasSubstr(follows));
    home.claude("Stop", "S2");
    ASSERT_TRUE(host.waitForOutput("finished"));
    EXPECT_EQ(home.rows("events"), 2);
}

TEST(RemovedHome, isShownAnewByAHostThatLooksOn) {
    const TestHome home;
    RunningProgram first{home.hostCall({"watch"})};
    ASSERT_TRUE(first.waitForOutput(leads));
    RunningProgram second{home.hostCall({"watch"})};
    ASSERT_TRUE(second.waitForOutput(leads));
    removeDatabase(home);
    home.claude("PermissionRequest", "S1");
    ASSERT_TRUE(first.waitForOutput("needs permission"));
    ASSERT_TRUE(second.waitForErrors(isGone));
    home.claude("Stop", "S1");
    ASSERT_TRUE(first.waitForOutput("finished"));
    EXPECT_TRUE(second.waitForOutput("finished"));
}

}  // namespace
}  // namespace tallowbrook
