// The programs beside an agent that ends, idles or waits without sending an event: a process that
// plays it, with records like those of Claude Code.
#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "Domain/Instant.h"
#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/WaitUntil.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

// Field 22 of proc(5)'s stat.
std::string startOf(pid_t pid) {
    const auto status = contentsOf("/proc/" + std::to_string(pid) + "/stat");
    std::string rest = status.substr(status.rfind(')') + 2);
    for (int field = 3; field < 22; ++field) rest.erase(0, rest.find(' ') + 1);
    return rest.substr(0, rest.find(' '));
}

struct StandInAgent : testing::Test {
    TestHome home;
    ChildProcess agent{[] {
        pause();
        return std::string{};
    }};
    pid_t pid = agent.pid;
    std::string start = startOf(agent.pid);
    std::filesystem::path record =
        home.directory.path / "user/.claude/sessions" / (std::to_string(pid) + ".json");

    void note(const std::string& status) const {
        create_directories(record.parent_path());
        const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(
            currentInstant().time_since_epoch());
        std::ofstream{record} << R"({"pid":)" << pid << R"(,"sessionId":"S1","cwd":"/x","kind":)"
                              << R"("interactive","procStart":")" << start << R"(","status":")"
                              << status << R"(","statusUpdatedAt":)" << now.count() << "}";
    }

    void killAgent() {
        agent.kill();
        agent.result();
    }

    // What the host has written down by itself.
    std::string known() const {
        SQLite::Database database{home.paths.databaseFile().string(), SQLite::OPEN_READONLY, 5000};
        SQLite::Statement query{database, "SELECT state FROM presence"};
        return query.executeStep() ? query.getColumn(0).getString() : "";
    }

    bool lists(const std::string& status) const {
        return home.host({"sessions"}).output.contains(" 1  " + status + " ");
    }

    // A host that has told of the agent's dialog.
    std::unique_ptr<RunningProgram> hostAtADialog() const {
        auto host = std::make_unique<RunningProgram>(home.hostCall({"watch"}));
        EXPECT_TRUE(host->waitForOutput("No sessions to show."));
        note("busy");
        home.claude("PermissionRequest");
        note("waiting");
        EXPECT_TRUE(host->waitForOutput("needs permission"));
        waitUntil([&] { return known() == "waiting"; });
        return host;
    }
};

TEST_F(StandInAgent, thatIsIdleAfterItsDialogWaitsNoMore) {
    const auto host = hostAtADialog();
    EXPECT_TRUE(lists("needs permission"));
    note("idle");
    waitUntil([&] { return known() == "idle"; });
    EXPECT_TRUE(lists("idle"));
    EXPECT_TRUE(home.host({"explain", "1"}).output.contains("Claude Code's own record says idle"));
    EXPECT_EQ(home.host({"next"}).output, "No session waits for you.\n");
}

TEST_F(StandInAgent, thatWasKilledHasEndedAlsoOnceItsRecordIsCleared) {
    const auto host = hostAtADialog();
    killAgent();
    waitUntil([&] { return known() == "gone"; });
    std::filesystem::remove(record);
    EXPECT_TRUE(lists("ended"));
    EXPECT_TRUE(home.host({"explain", "1"})
                    .output.contains("Its process (" + std::to_string(pid) + ") is gone"));
}

TEST_F(StandInAgent, thatWaitsIsShownWaitingWhileAnotherOneWorksBesideIt) {
    const auto host = hostAtADialog();
    home.claude("PostToolUse");
    waitUntil([&] { return home.rows("events") == 2; });
    EXPECT_TRUE(lists("needs permission"));
    note("busy");
    waitUntil([&] { return known() == "working"; });
    EXPECT_TRUE(lists("working"));
}

TEST_F(StandInAgent, isLookedAtByACommandWithoutAHost) {
    note("busy");
    home.claude("PermissionRequest");
    note("waiting");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    EXPECT_TRUE(lists("needs permission"));
    note("idle");
    EXPECT_TRUE(lists("idle"));
    killAgent();
    EXPECT_TRUE(lists("ended"));
}

TEST_F(StandInAgent, thatSpeaksAgainIsAlive) {
    ASSERT_EQ(home.host({"preferences", "completionAfter", "0"}).status, 0);
    const auto host = hostAtADialog();
    note("idle");
    waitUntil([&] { return known() == "idle"; });
    home.claude("PermissionRequest", "other");
    home.claude("UserPromptSubmit");
    note("busy");
    waitUntil([&] { return known() == "working" || lists("working"); });
    home.claude("Stop");
    EXPECT_TRUE(host->waitForOutput("finished"));
}

TEST_F(StandInAgent, isFoundWhereTheUserHasMovedItsFiles) {
    note("busy");
    home.claude("PermissionRequest");
    note("idle");
    std::filesystem::rename(home.directory.path / "user/.claude", home.directory.path / "moved");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    EXPECT_TRUE(lists("needs permission"));
    home.environment["CLAUDE_CONFIG_DIR"] = home.directory.path / "moved";
    EXPECT_TRUE(lists("idle"));
}

}  // namespace
}  // namespace tallowbrook
