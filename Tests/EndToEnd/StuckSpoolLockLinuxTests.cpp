// A process that keeps the spool's lock and does not go on, such as a helper that was stopped.
#include <gtest/gtest.h>

#include <csignal>

#include "Domain/EventCoding.h"
#include "EventBridge/SpoolDrainer.h"
#include "Support/FileContents.h"
#include "Support/LockHolder.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

TEST(StuckSpoolLock, isNamedByItsOwnerAndHoldsUpNoSegment) {
    const TestHome home;
    home.claude("PermissionRequest", "active");
    writeContents(home.paths.spoolDirectory() / "overflow-1-1-A.jsonl",
                  EventCoding::encodeLine(currentEvent("named")));
    LockHolder holder{home.paths.spoolLockFile()};
    ASSERT_TRUE(holder.holds);
    ASSERT_EQ(kill(holder.pid(), SIGSTOP), 0);

    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForErrors(" until it goes on or ends.\n"));
    EXPECT_EQ(home.rows("events"), 1) << "the segment alone";
    EXPECT_FALSE(exists(home.paths.spoolDirectory() / "overflow-1-1-A.jsonl"));
    EXPECT_TRUE(exists(home.paths.activeSpoolFile()));

    kill(holder.pid(), SIGCONT);
    holder.releaseSoon();
    ASSERT_TRUE(host.waitForOutput("Claude Code needs permission"));
    EXPECT_EQ(home.rows("events"), 2);
    host.send(SIGINT);
    const ProgramResult result = host.wait();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors,
              "tallowbrook: The spool could not be claimed: lock-timeout. Its events are kept.\n"
              "tallowbrook: Process " +
                  std::to_string(holder.pid()) +
                  " (EndToEndTests) has held the spool's lock for more than a second: no event can "
                  "be recorded until it goes on or ends.\n");
}

}  // namespace
}  // namespace tallowbrook
