#include "Watch/StateFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "DatabaseAtHome.h"
#include "Store/SessionStore.h"
#include "Support/BuildPaths.h"
#include "Support/DirectoryNames.h"
#include "Support/FileContents.h"
#include "Support/SampleSnapshots.h"

namespace tallowbrook::host {
namespace {

using std::chrono::minutes;

struct StateForOthers : testing::Test {
    DatabaseAtHome home;
    Database database = home.open();
    Instant now = sampleTime;
    std::map<std::string, pid_t> shells;  // by session id
    int searches = 0;
    StateFile state{home.paths, [this](const SessionSnapshot& session) -> std::optional<pid_t> {
                        ++searches;
                        const auto found = shells.find(session.key.sessionID);
                        if (found == shells.end()) return std::nullopt;
                        return found->second;
                    }};

    std::filesystem::path file() const { return StateFile::location(home.paths); }

    std::int64_t add(const std::string& id, SessionStatus status, minutes ago,
                     const std::string& cwd = "/src/proj") {
        auto session = minimalSnapshot();
        session.key.sessionID = id;
        session.status = status;
        if (status == SessionStatus::needsAttention) session.attention = AttentionKind::permission;
        session.statusSince = session.lastSeenAt = now - ago;
        session.cwd = cwd;
        return SessionStore{database}.addSession(session);
    }

    // The file's text with the host's process as 4242.
    std::string text() const {
        auto text = contentsOf(file());
        const std::string host = "\"hostPid\":" + std::to_string(getpid()) + ",";
        if (const auto at = text.find(host); at != text.npos)
            text.replace(at, host.size(), "\"hostPid\":4242,");
        return text;
    }

    ino_t inode() const {
        struct stat status{};
        EXPECT_EQ(stat(file().c_str(), &status), 0);
        return status.st_ino;
    }
};

TEST_F(StateForOthers, saysThatNothingWaits) {
    state.update(database, now);
    EXPECT_EQ(text(), R"({"hostPid":4242,"updatedAt":")" + EventDate::text(now) +
                          R"(","schema":1,"waiting":[],"working":0})" + "\n");
}

TEST_F(StateForOthers, isTheSampleThatItsReadersAreTestedWith) {
    std::filesystem::create_directory(home.paths.editorsDirectory());
    shells["S2"] = 850;
    add("S1", SessionStatus::needsAttention, minutes{1});
    add("S2", SessionStatus::needsAttention, minutes{5}, "/src/a \"b\"");
    add("S3", SessionStatus::working, minutes{2});
    add("S4", SessionStatus::working, minutes{20});  // silent for too long
    add("S5", SessionStatus::completed, minutes{1});
    add(std::string{setupCheckPrefix} + "1", SessionStatus::needsAttention, minutes{1});
    add(std::string{setupCheckPrefix} + "2", SessionStatus::working, minutes{1});
    state.update(database, now);
    EXPECT_EQ(text(),
              contentsOf(std::filesystem::path{BuildPaths::samples} / "editor-state-1.json"));
}

TEST_F(StateForOthers, isForItsOwnerAloneWithNothingBesideIt) {
    const auto before = namesIn(home.paths.home);
    writeContents(file().string() + ".unfinished", "of a host that was killed");
    state.update(database, now);
    struct stat status{};
    ASSERT_EQ(stat(file().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    state.remove();
    EXPECT_EQ(namesIn(home.paths.home), before);
}

TEST_F(StateForOthers, isWrittenOnlyWhenItSaysSomethingElse) {
    add("S1", SessionStatus::needsAttention, minutes{1});
    state.update(database, now);
    const auto first = contentsOf(file());
    state.update(database, now + minutes{1});
    EXPECT_EQ(contentsOf(file()), first);
    add("S2", SessionStatus::needsAttention, minutes{0});
    state.update(database, now + minutes{1});
    EXPECT_NE(contentsOf(file()), first);
}

TEST_F(StateForOthers, isWrittenAnewWhereItWasRemoved) {
    state.update(database, now);
    std::filesystem::remove(file());
    state.update(database, now);
    EXPECT_TRUE(std::filesystem::exists(file()));
}

TEST_F(StateForOthers, looksForAShellOnceUntilTheWindowsChange) {
    std::filesystem::create_directory(home.paths.editorsDirectory());
    add("S1", SessionStatus::needsAttention, minutes{1});
    state.update(database, now);
    state.update(database, now);
    EXPECT_EQ(searches, 1);
    shells["S1"] = 850;
    std::filesystem::last_write_time(home.paths.editorsDirectory(),
                                     std::filesystem::file_time_type::clock::now() + minutes{1});
    state.update(database, now);
    EXPECT_EQ(searches, 2);
    EXPECT_THAT(text(), testing::HasSubstr("\"shellPid\":850"));
}

TEST_F(StateForOthers, mayHaveNewsOnlyAfterWindowsHaveChangedWhileASessionWaits) {
    state.update(database, now);
    std::filesystem::create_directory(home.paths.editorsDirectory());
    EXPECT_FALSE(state.mayHaveNews());
    std::filesystem::remove(home.paths.editorsDirectory());
    add("S1", SessionStatus::needsAttention, minutes{1});
    state.update(database, now);
    EXPECT_FALSE(state.mayHaveNews());
    std::filesystem::create_directory(home.paths.editorsDirectory());
    EXPECT_TRUE(state.mayHaveNews());
    state.update(database, now);
    EXPECT_FALSE(state.mayHaveNews());
}

TEST_F(StateForOthers, isGivenUpQuietlyWhereItCannotBeWritten) {
    std::filesystem::create_directory(file());
    writeContents(file() / "something", "");
    state.update(database, now);
    std::filesystem::remove_all(file());
    state.update(database, now);
    EXPECT_TRUE(std::filesystem::is_regular_file(file()));
}

}  // namespace
}  // namespace tallowbrook::host
