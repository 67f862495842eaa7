// What the host tells of events that helpers could not record.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include "Support/FileContents.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

const std::string refusal = " helper: claude-code spool write failed: ";

void log(const TestHome& home, const std::string& lines) {
    create_directories(home.paths.logsDirectory());
    const auto file = home.paths.helperLogFile();
    writeContents(file, (exists(file) ? contentsOf(file) : "") + lines);
}

// What a pass says on standard error.
std::string said(const TestHome& home) {
    ProgramCall call = home.hostCall({"watch", "--once"});
    call.environment["TZ"] = "UTC";
    const ProgramResult result = run(call);
    EXPECT_EQ(result.status, 0);
    return result.errors;
}

TEST(RefusedEvents, areCountedOnceWithTheirTimesAndTheirReason) {
    const TestHome home;
    log(home, "2025-11-15T14:05:55.123Z" + refusal + "io-write-errno28\n" +
                  "2025-11-15T14:07:00.000Z helper: claude-code normalization failed: "
                  "invalid-json\n" +
                  "2025-11-15T14:09:55.123Z" + refusal + "io-open-spool-errno28\n" + "torn");
    EXPECT_EQ(said(home),
              "tallowbrook: 2 events could not be recorded between 15 Nov 2025 14:05 and 15 Nov "
              "2025 14:09: the disk was full.\n");
    EXPECT_EQ(said(home), "");

    log(home, "\n2025-11-15T15:00:00.000Z" + refusal + "lock-timeout\n");
    EXPECT_EQ(said(home),
              "tallowbrook: One event could not be recorded at 15 Nov 2025 15:00: another process "
              "held the spool's lock.\n");
    EXPECT_EQ(said(home), "");
}

TEST(RefusedEvents, areNotCountedAgainWhenTheLogIsMovedAside) {
    const TestHome home;
    log(home, "2025-11-15T14:05:55.123Z" + refusal + "lock-timeout\n");
    EXPECT_NE(said(home), "");
    log(home, "2025-11-15T14:06:00.000Z" + refusal + "lock-timeout\n");
    rename(home.paths.helperLogFile(), home.paths.helperLogFile().string() + ".1");
    log(home, "2025-11-15T14:06:10.000Z" + refusal + "lock-timeout\n");
    EXPECT_EQ(said(home).substr(0, 22), "tallowbrook: 2 events ");
    EXPECT_EQ(said(home), "");
}

TEST(RefusedEvents, areToldByAHostThatStays) {
    const TestHome home;
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput("No sessions to show."));
    // A directory in the place of the active file refuses every event.
    create_directories(home.paths.activeSpoolFile());
    home.hook({"claude-code"}, claudePayload("Stop"));
    EXPECT_TRUE(host.waitForErrors("One event could not be recorded at "));
}

TEST(RefusedEvents, areToldByAHostThatLooksOnToo) {
    const TestHome home;
    RunningProgram first{home.hostCall({"watch"})};
    ASSERT_TRUE(first.waitForOutput("No sessions to show."));
    RunningProgram second{home.hostCall({"watch"})};
    ASSERT_TRUE(second.waitForOutput("No sessions to show."));
    create_directories(home.paths.activeSpoolFile());
    home.hook({"claude-code"}, claudePayload("Stop"));
    const std::string loss = "One event could not be recorded at ";
    EXPECT_TRUE(first.waitForErrors(loss));
    EXPECT_TRUE(second.waitForErrors(loss));

    // What both have said, neither says again when the other ends.
    first.send(SIGTERM);
    EXPECT_EQ(first.wait().status, 0);
    ASSERT_TRUE(second.waitForErrors("this one takes over.\n"));
    second.send(SIGTERM);
    const auto errors = second.wait().errors;
    EXPECT_EQ(errors.find(loss), errors.rfind(loss)) << errors;
}

}  // namespace
}  // namespace tallowbrook
