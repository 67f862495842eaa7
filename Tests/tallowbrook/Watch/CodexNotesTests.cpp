// Locks and turns as Codex CLI 0.169.0 leaves them: flock(2) on a file a session, and a table of a
// SQLite database with a write-ahead log.
#include "Watch/CodexNotes.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <fstream>
#include <set>

#include "Support/ChildProcess.h"
#include "Support/TemporaryDirectory.h"
#include "Support/WaitUntil.h"
#include "System/FileDescriptor.h"

namespace tallowbrook::host {
namespace {

struct CodexHome : testing::Test {
    TemporaryDirectory home;
    std::filesystem::path history = home.path / "thread_history_1.sqlite";
    std::filesystem::path locks = home.path / "thread-writer-locks";
    std::filesystem::path lock = locks / "S1.lock";

    CodexHome() { create_directories(locks); }

    SessionNotes read(const std::string& session = "S1") const {
        return CodexNotes::in(home.path).read({session}).at(session);
    }
    std::optional<AgentState> turn() const {
        const auto notes = read();
        return notes.state ? std::optional{notes.state->state} : std::nullopt;
    }

    // Open as the agent has it, so that the log stays.
    SQLite::Database makeHistory() const {
        SQLite::Database database{history.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE};
        database.exec("PRAGMA journal_mode = WAL");
        database.exec(
            "CREATE TABLE thread_turns (thread_id TEXT, turn_id TEXT, status TEXT,"
            " started_at INTEGER, completed_at INTEGER, duration_ms INTEGER, error_json TEXT)");
        return database;
    }

    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator{home.path})
            names.insert(entry.path().filename());
        return names;
    }
};

TEST_F(CodexHome, tellsHowTheLastTurnOfASessionEnded) {
    auto database = makeHistory();
    EXPECT_EQ(turn(), std::nullopt);
    database.exec(
        "INSERT INTO thread_turns (thread_id, turn_id, status, started_at, completed_at) VALUES"
        " ('S1', 'a', 'completed', 1000, 1010), ('S2', 'b', 'interrupted', 2000, 2001),"
        " ('S1', 'c', 'failed', 1020, 1030)");
    EXPECT_EQ(turn(), AgentState::failed);
    EXPECT_EQ(read().state->since, Instant{std::chrono::seconds{1030}});
    database.exec("INSERT INTO thread_turns VALUES ('S1', 'd', 'inProgress', 1040, NULL, 0, '')");
    EXPECT_EQ(turn(), AgentState::working);
    EXPECT_EQ(read().state->since, Instant{std::chrono::seconds{1040}});
    database.exec("UPDATE thread_turns SET status = 'dreaming'");
    EXPECT_EQ(turn(), std::nullopt);
    EXPECT_EQ(read("S3").state, std::nullopt);
}

TEST_F(CodexHome, isReadWithoutLeavingATrace) {
    {
        auto database = makeHistory();
        database.exec("INSERT INTO thread_turns VALUES ('S1', 'a', 'failed', 9, 9, 0, '')");
        const auto before = files();
        EXPECT_EQ(turn(), AgentState::failed);
        EXPECT_EQ(files(), before);
        // The writer goes on beside a reader that has just looked.
        database.exec("UPDATE thread_turns SET status = 'completed'");
        EXPECT_EQ(turn(), AgentState::finished);
    }
    const auto closed = files();
    EXPECT_FALSE(closed.contains("thread_history_1.sqlite-wal"));
    EXPECT_EQ(turn(), AgentState::finished);
    EXPECT_EQ(files(), closed);
}

TEST_F(CodexHome, ofAnotherFormSaysNothing) {
    std::ofstream{history} << "no database";
    EXPECT_EQ(turn(), std::nullopt);
    std::filesystem::remove(history);
    SQLite::Database{history.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE}.exec(
        "CREATE TABLE thread_turns (thread_id TEXT)");
    EXPECT_EQ(turn(), std::nullopt);
    std::filesystem::remove(history);
    std::filesystem::create_directory(history);
    EXPECT_EQ(turn(), std::nullopt);
}

TEST_F(CodexHome, tellsWhetherAProcessKeepsTheSession) {
    EXPECT_EQ(read().lock, SessionLock::missing);
    ChildProcess agent{[this] {
        const FileDescriptor file{open(lock.c_str(), O_RDWR | O_CREAT, 0600)};
        if (flock(file.number(), LOCK_EX) != 0) return std::string{"no lock"};
        pause();
        return std::string{};
    }};
    waitUntil([&] { return read().lock == SessionLock::held; });
    agent.kill();
    agent.result();
    EXPECT_EQ(read().lock, SessionLock::isFree);
    std::filesystem::remove(lock);
    EXPECT_EQ(read().lock, SessionLock::missing);
}

TEST_F(CodexHome, isNotLeftByTheNameOfASession) {
    EXPECT_TRUE(CodexNotes::in(home.path).read({"../S1", ""}).empty());
}

}  // namespace
}  // namespace tallowbrook::host
