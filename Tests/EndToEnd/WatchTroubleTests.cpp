// `watch` where something is in its way: it says so, loses nothing and overwrites nothing.
#include <SQLiteCpp/Database.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "EventBridge/SpoolDrainer.h"
#include "Support/FileContents.h"
#include "Support/LockHolder.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// One sentence on standard error, nothing on standard output, status 1.
void expectRefusal(const ProgramResult& result, const std::string& sentence) {
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "tallowbrook: " + sentence + "\n");
}

TEST(WatchTrouble, aHomeThatIsAFileIsRefused) {
    const TestHome home;
    writeContents(home.paths.home, "not a directory");
    const std::string sentence = "The database " + home.paths.databaseFile().string() +
                                 " cannot be opened: stat failed: Not a directory.";
    expectRefusal(home.host({"watch", "--once"}), sentence);
    expectRefusal(home.host({"watch"}), sentence);
    EXPECT_EQ(contentsOf(home.paths.home), "not a directory");
}

TEST(WatchTrouble, aDatabaseThatIsADirectoryIsRefused) {
    const TestHome home;
    create_directories(home.paths.databaseFile());
    expectRefusal(home.host({"watch", "--once"}),
                  "The database " + home.paths.databaseFile().string() +
                      " cannot be opened: open failed: Is a directory.");
}

TEST(WatchTrouble, aDatabaseOfANewerProgramIsRefusedAndLeftAsItIs) {
    const TestHome home;
    home.claude("Stop");
    create_directories(home.paths.home);
    {
        SQLite::Database database{home.paths.databaseFile().string(),
                                  SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE};
        database.exec("CREATE TABLE future (x); PRAGMA user_version = 99");
    }
    const std::string before = contentsOf(home.paths.databaseFile());
    const std::string sentence = "The database " + home.paths.databaseFile().string() +
                                 " cannot be opened: it was written by a newer version of "
                                 "tallowbrook.";
    expectRefusal(home.host({"watch", "--once"}), sentence);
    expectRefusal(home.host({"watch"}), sentence);
    expectRefusal(home.host({"sessions"}), sentence);
    EXPECT_EQ(contentsOf(home.paths.databaseFile()), before);
    EXPECT_FALSE(std::filesystem::exists(home.paths.databaseFile().string() + "-wal"));
    EXPECT_EQ(home.spooled().size(), 1U);
}

TEST(WatchTrouble, aFileThatIsNoDatabaseIsRefusedAndLeftAsItIs) {
    for (const std::string& contents : {std::string{"These are my notes.\n"},
                                        std::string(4096, 'x'), std::string(100'000, 'y')}) {
        const TestHome home;
        home.claude("Stop");
        writeContents(home.paths.databaseFile(), contents);
        const std::string file = home.paths.databaseFile().string();
        const std::string sentence =
            "The database " + file + " is damaged: file is not a database. Move it away (mv " +
            file + " " + file +
            ".damaged) and start again; what the agents report from then on is kept.";
        expectRefusal(home.host({"watch", "--once"}), sentence);
        expectRefusal(home.host({"sessions", "--json"}), sentence);
        EXPECT_EQ(contentsOf(home.paths.databaseFile()), contents);
        EXPECT_EQ(home.spooled().size(), 1U);
    }
}

TEST(WatchTrouble, aDamagedDatabaseIsLeftAsItIsAndTheSpoolKept) {
    const TestHome home;
    ASSERT_EQ(home.host({"watch", "--once"}).status, 0);
    std::string damaged = contentsOf(home.paths.databaseFile());
    ASSERT_GT(damaged.size(), 4096U);
    // The first 100 bytes are the header, which alone still looks well.
    damaged.replace(100, damaged.size() - 100, damaged.size() - 100, '\x7F');
    writeContents(home.paths.databaseFile(), damaged);
    home.claude("Stop");

    const ProgramResult result = home.host({"watch", "--once"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(contains(result.errors, "malformed")) << result.errors;
    EXPECT_EQ(contentsOf(home.paths.databaseFile()), damaged);
    EXPECT_EQ(SpoolDrainer{home.paths}.pendingSegmentCount(), 1);
}

TEST(WatchTrouble, aSegmentThatCannotBeReadIsKeptAndStopsNoOther) {
    const TestHome home;
    const auto segment = home.paths.spoolDirectory() / "ingest-1-1-A.jsonl";
    create_directories(segment);
    home.claude("Stop");
    for (int round = 0; round < 2; ++round) {
        const ProgramResult result = home.host({"watch", "--once"});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors,
                  "tallowbrook: The spool segment ingest-1-1-A.jsonl could not be read: read "
                  "failed: Is a directory. It is kept.\n");
        EXPECT_TRUE(contains(result.output, "completed")) << result.output;
        EXPECT_EQ(home.rows("events"), 1);
        EXPECT_TRUE(exists(segment));
        EXPECT_FALSE(exists(home.paths.activeSpoolFile()));
    }
}

TEST(WatchTrouble, aLostSegmentLinkIsKeptAndStopsNoOther) {
    const TestHome home;
    const auto segment = home.paths.spoolDirectory() / "overflow-1-1-A.jsonl";
    create_directories(home.paths.spoolDirectory());
    create_symlink("nowhere", segment);
    home.claude("Stop");
    const ProgramResult result = home.host({"watch", "--once"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "tallowbrook: The spool segment overflow-1-1-A.jsonl could not be read: open failed: "
              "No such file or directory. It is kept.\n");
    EXPECT_EQ(home.rows("events"), 1);
    EXPECT_TRUE(is_symlink(segment));
}

TEST(WatchTrouble, aSegmentThatIsAPipeStopsNoOther) {
    const TestHome home;
    const auto segment = home.paths.spoolDirectory() / "ingest-1-1-A.jsonl";
    create_directories(home.paths.spoolDirectory());
    ASSERT_EQ(mkfifo(segment.c_str(), 0600), 0);
    home.claude("Stop");
    ProgramCall call = home.hostCall({"watch", "--once"});
    // Nobody will ever write to it: a host that waits for that is ended by the alarm.
    call.prepare = [] { alarm(10); };
    const ProgramResult result = run(call);
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(contains(result.errors, "ingest-1-1-A.jsonl could not be read")) << result.errors;
    EXPECT_EQ(home.rows("events"), 1);
    EXPECT_TRUE(is_fifo(segment));
}

TEST(WatchTrouble, aSpoolThatCannotBeClaimedIsTriedAgainLater) {
    const TestHome home;
    home.claude("Stop");
    {
        const LockHolder holder{home.paths.spoolLockFile()};
        ASSERT_TRUE(holder.holds);
        const ProgramResult result = home.host({"watch", "--once"});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "No sessions to show.\n");
        EXPECT_TRUE(contains(result.errors,
                             "tallowbrook: The spool could not be claimed: lock-timeout. Its "
                             "events are kept.\n"));
        EXPECT_TRUE(contains(result.errors, " has held the spool's lock for more than a second"))
            << result.errors;
    }
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    EXPECT_EQ(home.rows("events"), 1);
}

TEST(WatchTrouble, aSpoolDirectoryThatIsAFileIsSaid) {
    const TestHome home;
    writeContents(home.paths.spoolDirectory(), "in the way");
    const ProgramResult result = home.host({"watch", "--once"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "tallowbrook: The spool could not be claimed: stat failed: Not a directory. Its "
              "events are kept.\n");
    EXPECT_EQ(contentsOf(home.paths.spoolDirectory()), "in the way");
}

TEST(WatchTrouble, aFileSizeLimitIsSaidAndTheSpoolKept) {
    const TestHome home;
    home.claude("Stop");
    ProgramCall call = home.hostCall({"watch", "--once"});
    call.prepare = [] {
        const rlimit limit{4000, 4000};
        setrlimit(RLIMIT_FSIZE, &limit);
    };
    const ProgramResult result = run(call);
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(contains(result.errors, "tallowbrook: The database ")) << result.errors;
    EXPECT_EQ(home.spooled().size(), 1U);

    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    EXPECT_EQ(home.rows("events"), 1);
}

TEST(WatchTrouble, isWrittenToTheHostsLogToo) {
    const TestHome home;
    home.spool("garbage\n");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    const std::string log = contentsOf(home.paths.appLogFile());
    EXPECT_TRUE(contains(log, " watch: One line of the spool held no event and was skipped.\n"))
        << log;
}

}  // namespace
}  // namespace tallowbrook
