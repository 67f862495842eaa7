#include <gtest/gtest.h>

#include "Domain/EventCoding.h"
#include "EventBridge/SpoolDrainer.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

const std::string header =
    "  #  STATUS            AGENT        PROJECT                   SESSION    LAST HEARD OF\n";

std::string permissionLine(const std::string& project = "proj") {
    return "TIME  Claude Code needs permission: " + project +
           " \xE2\x80\x94 waiting for approval to use Bash.\n";
}

std::string finishedLineOf(const std::string& project) {
    return "TIME  Claude Code finished: " + project + " \xE2\x80\x94 turn completed.\n";
}
const std::string finishedLine = finishedLineOf("proj");

// What one `watch --once` prints, which must end well and complain of nothing.
std::string watched(const TestHome& home) {
    const ProgramResult result = home.host({"watch", "--once"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    return withoutTimes(result.output);
}

TEST(WatchOnce, ofANewHomeShowsNoSessionAndMakesTheDatabase) {
    const TestHome home;
    EXPECT_EQ(watched(home), "No sessions to show.\n");
    EXPECT_EQ(home.rows("events"), 0);
}

TEST(WatchOnce, tellsEachNotificationAndListsTheSessions) {
    const TestHome home;
    home.claude("PermissionRequest");
    EXPECT_EQ(
        watched(home),
        permissionLine() + header +
            "  1  needs permission  Claude Code  proj                      S1         just now\n");
    EXPECT_EQ(SpoolDrainer{home.paths}.pendingSegmentCount(), 0);
    EXPECT_EQ(home.rows("events"), 1);
}

TEST(WatchOnce, tellsInTheOrderOfTheEvents) {
    const TestHome home;
    home.claude("PermissionRequest", "first");
    EXPECT_EQ(home.hook({"codex"}, claudePayload("PermissionRequest", "second")), quiet);
    EXPECT_EQ(home.hook({"claude-code", "--test"}, claudePayload("StopFailure", "third")), quiet);
    home.claude("SessionStart", "fourth");
    EXPECT_EQ(
        watched(home),
        permissionLine() +
            "TIME  Codex CLI needs permission: proj #2 \xE2\x80\x94 waiting for approval to use "
            "Bash.\n"
            "TIME  Test: Claude Code turn failed: proj #3 \xE2\x80\x94 error reported.\n" +
            header +
            "  1  needs permission  Codex CLI    proj #2                   second     just now\n"
            "  2  needs permission  Claude Code  proj #1                   first      just now\n"
            "  3  failed            Claude Code  proj #3                   third      just now\n"
            "  4  unknown           Claude Code  proj #4                   fourth     just now\n");
}

TEST(WatchOnce, tellsNothingAgain) {
    const TestHome home;
    home.claude("Stop");
    const std::string list =
        header +
        "  1  completed         Claude Code  proj                      S1         just now\n";
    EXPECT_EQ(watched(home), finishedLine + list);
    EXPECT_EQ(watched(home), list);
    EXPECT_EQ(home.rows("events"), 1);
    EXPECT_EQ(home.rows("notifications"), 1);
}

TEST(WatchOnce, storesAndTellsASegmentThatComesTwiceOnce) {
    const TestHome home;
    home.claude("PermissionRequest");
    home.claude("Stop", "S2");
    const std::string lines = contentsOf(home.paths.activeSpoolFile());
    const std::string first = watched(home);
    EXPECT_EQ(first.find(permissionLine()), 0U) << first;

    // As after a crash between the commit and the removal.
    writeContents(home.paths.spoolDirectory() / "overflow-1-1-1.jsonl", lines);
    const std::string second = watched(home);
    EXPECT_EQ(second.find(header), 0U) << second;
    EXPECT_EQ(home.rows("events"), 2);
    EXPECT_EQ(home.rows("sessions"), 2);
    EXPECT_EQ(home.rows("notifications"), 2);
    EXPECT_FALSE(exists(home.paths.spoolDirectory() / "overflow-1-1-1.jsonl"));
}

TEST(WatchOnce, takesSegmentsInTheirOrder) {
    const TestHome home;
    const auto segment = [&](const char* name, const char* eventType, EventCategory category) {
        AgentEvent event = currentEvent("S1");
        event.eventType = eventType;
        event.category = category;
        writeContents(home.paths.spoolDirectory() / name, EventCoding::encodeLine(event));
    };
    EXPECT_EQ(home.host({"preferences", "completionAfter", "0"}).status, 0);
    // Written in the order of the processing, so that the times ascend.
    segment("overflow-9-1-A.jsonl", "UserPromptSubmit", EventCategory::promptSubmitted);
    segment("ingest-10-1-A.jsonl", "StopFailure", EventCategory::turnFailed);
    segment("overflow-11-1-A.jsonl", "UserPromptSubmit", EventCategory::promptSubmitted);
    home.claude("Stop");
    EXPECT_EQ(
        watched(home),
        "TIME  Claude Code turn failed: proj \xE2\x80\x94 error reported.\n" + finishedLine +
            header +
            "  1  completed         Claude Code  proj                      S1         just now\n");
}

TEST(WatchOnce, passesOverLinesThatAreNoEvents) {
    const TestHome home;
    home.claude("PermissionRequest", "S1");
    home.spool("garbage\n\n{\"schema\":1}\n\xFF\xFE\n");
    home.claude("Stop", "S2");
    home.spool("{\"torn");
    const ProgramResult result = home.host({"watch", "--once"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "tallowbrook: 4 lines of the spool held no event and were skipped.\n");
    EXPECT_EQ(withoutTimes(result.output).find(permissionLine() + finishedLineOf("proj #2")), 0U)
        << result.output;
    EXPECT_EQ(home.rows("events"), 2);
    EXPECT_EQ(SpoolDrainer{home.paths}.pendingSegmentCount(), 0);
}

TEST(WatchOnce, countsASingleBadLineInTheSingular) {
    const TestHome home;
    home.spool("garbage");
    const ProgramResult result = home.host({"watch", "--once"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "tallowbrook: One line of the spool held no event and was skipped.\n");
}

TEST(WatchOnce, keepsTheSetupsOwnSessionsToItself) {
    const TestHome home;
    home.claude("PermissionRequest", "tallowbrook-setup-check-1");
    home.claude("Stop", "tallowbrook-setup-check-");
    EXPECT_EQ(watched(home), "No sessions to show.\n");
    EXPECT_EQ(home.host({"sessions", "--json", "--all"}).output, "[]\n");
    EXPECT_EQ(home.rows("events"), 2);
    EXPECT_EQ(home.rows("notifications"), 0);
}

TEST(WatchOnce, showsASessionWhoseIdOnlyLooksLikeTheSetups) {
    const TestHome home;
    home.claude("Stop", "tallowbrook-setup-check");
    const std::string output = watched(home);
    EXPECT_EQ(output.find(finishedLine), 0U) << output;
    EXPECT_NE(output.find("completed"), std::string::npos);
}

TEST(WatchOnce, tellsOfAnOldBacklogInOneLine) {
    const TestHome home;
    AgentEvent old = currentEvent("old");
    old.observedAt -= std::chrono::minutes{11};
    AgentEvent young = currentEvent("young");
    young.observedAt -= std::chrono::minutes{9};
    home.spool(old);
    home.spool(young);
    EXPECT_EQ(
        watched(home),
        finishedLineOf("proj #2") + "TIME  While you were away: 1 finished.\n" + header +
            "  1  completed         Claude Code  proj #2                   young      9 min ago\n"
            "  2  completed         Claude Code  proj #1                   old        11 min "
            "ago\n");
    EXPECT_EQ(home.rows("events"), 2);
}

TEST(WatchOnce, storesAnEventOfNoSession) {
    const TestHome home;
    EXPECT_EQ(home.hook({"claude-code"}, R"({"hook_event_name":"Stop"})"), quiet);
    EXPECT_EQ(watched(home), "No sessions to show.\n");
    EXPECT_EQ(home.rows("events"), 1);
}

TEST(WatchOnce, leavesOtherFilesOfTheSpoolAlone) {
    const TestHome home;
    const auto directory = home.paths.spoolDirectory();
    const std::string line = EventCoding::encodeLine(currentEvent("S1"));
    for (const char* name : {"notes.jsonl", "overflow-abc-1-2.jsonl", "ingest-1-1-A.txt"})
        writeContents(directory / name, line);
    EXPECT_EQ(watched(home), "No sessions to show.\n");
    for (const char* name : {"notes.jsonl", "overflow-abc-1-2.jsonl", "ingest-1-1-A.txt"})
        EXPECT_EQ(contentsOf(directory / name), line) << name;
}

TEST(WatchOnce, whatItMakesIsTheOwnersAloneWhateverTheUmask) {
    for (const mode_t mask : {mode_t{0000}, mode_t{0022}, mode_t{0077}}) {
        const TestHome home;
        ProgramCall call = home.hostCall({"watch"});
        call.prepare = [mask] { umask(mask); };
        RunningProgram host{call};
        ASSERT_TRUE(host.waitForOutput("No sessions to show."));
        EXPECT_EQ(modeOf(home.paths.home.c_str()), 0700U);
        EXPECT_EQ(modeOf(home.paths.spoolDirectory().c_str()), 0700U);
        // The companion files are there for as long as a program has the database open.
        for (const char* companion : {"", "-wal", "-shm"}) {
            const std::string file = home.paths.databaseFile().string() + companion;
            EXPECT_EQ(modeOf(file.c_str()), 0600U) << file;
        }
    }
}

TEST(WatchOnce, makesADatabaseThatOthersCouldReadTheOwnersAlone) {
    const TestHome home;
    watched(home);
    std::filesystem::permissions(home.paths.databaseFile(), std::filesystem::perms{0644});
    watched(home);
    EXPECT_EQ(modeOf(home.paths.databaseFile().c_str()), 0600U);
}

}  // namespace
}  // namespace tallowbrook
