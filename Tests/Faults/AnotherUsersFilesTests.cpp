// Files of a home that belong to root, as a host or a helper leaves them that once ran as root, and
// programs of an ordinary user who may not touch them.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <optional>

#include "EndToEnd/TestHome.h"
#include "HostPromises.h"
#include "SpoolContents.h"
#include "Support/BuildPaths.h"
#include "Support/FileContents.h"
#include "Support/OrdinaryUser.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

const std::string refused = std::to_string(EACCES);

class AnotherUsersFiles : public testing::Test {
 protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "only root has files to keep from another user";
        user = OrdinaryUser::find();
        if (!user) GTEST_SKIP() << OrdinaryUser::missing;
        const auto mayRun = inChildProcess([&] {
            const bool may = user->become() && access(BuildPaths::helper, X_OK) == 0 &&
                             access(BuildPaths::host, X_OK) == 0;
            return may ? "yes" : "no";
        });
        if (mayRun != "yes") GTEST_SKIP() << "the programs lie where another user may not run them";
    }

    void giveAll(const TestHome& home) const {
        ASSERT_TRUE(user->own(home.directory.path));
        for (const auto& entry : fs::recursive_directory_iterator{home.directory.path})
            ASSERT_TRUE(user->own(entry.path())) << entry.path();
    }

    // Makes the place root's own; an empty file where there is none.
    static void keep(const fs::path& place) {
        if (!exists(place)) writeContents(place, "");
        ASSERT_EQ(chown(place.c_str(), 0, 0), 0);
        ASSERT_EQ(chmod(place.c_str(), is_directory(place) ? 0700 : 0600), 0);
    }

    ProgramResult runAsUser(ProgramCall call) const {
        call.prepare = [ordinary = *user] {
            if (!ordinary.become()) _exit(125);
        };
        return run(call);
    }

    std::optional<OrdinaryUser> user;
};

TEST_F(AnotherUsersFiles, areBorneByTheHelperInSilence) {
    struct Row {
        const char* place;
        const char* failure;  // in the log; null where that is out of reach, too
        int recorded;
    };
    for (const auto& [place, failure, recorded] : {
             Row{"", nullptr, 0},
             Row{"spool", "io-open-lock-errno", 0},
             Row{"spool/spool.lock", "io-open-lock-errno", 0},
             Row{"spool/events.jsonl", "io-open-spool-errno", 0},
             Row{"logs", nullptr, 1},
             Row{"logs/helper.log", nullptr, 1},
         }) {
        SCOPED_TRACE(place);
        const TestHome home;
        home.claude("Stop", "earlier");
        fs::create_directory(home.paths.logsDirectory(), home.paths.spoolDirectory());
        giveAll(home);
        keep(*place == '\0' ? home.paths.home : home.paths.home / place);

        const auto call = home.hookCall({"claude-code"}, claudePayload("Stop", "victim"));
        EXPECT_EQ(runAsUser(call), quiet);
        const auto sessions = SpoolContents::of(home.paths).sessions();
        EXPECT_EQ(sessions.count("earlier"), 1U);
        EXPECT_EQ(sessions.count("victim"), static_cast<std::size_t>(recorded));
        if (failure != nullptr) {
            EXPECT_EQ(home.logged(), std::vector{"helper: claude-code spool write failed: " +
                                                 (failure + refused)});
        }

        giveAll(home);
        EXPECT_EQ(runAsUser(home.hookCall({"claude-code"}, claudePayload("Stop", "next"))), quiet);
        EXPECT_EQ(SpoolContents::of(home.paths).sessions().count("next"), 1U);
    }
}

class AnotherUsersFilesForTheHost : public AnotherUsersFiles {
 protected:
    // A run in which `trouble` has been made, and the next one in which it is mended.
    void expectSaid(const std::function<void(const TestHome&)>& trouble, int status,
                    const std::string& sentence) const {
        const TestHome home;
        prepareRunAfterACrash(home);
        fs::create_directory(home.paths.logsDirectory(), home.paths.spoolDirectory());
        const auto promises = HostPromises::of(home);
        giveAll(home);
        trouble(home);

        const ProgramResult result = runAsUser(home.hostCall({"watch", "--once"}));
        EXPECT_EQ(result.status, status);
        EXPECT_NE(result.errors.find(sentence), std::string::npos) << result.errors;
        HostPromises::expectSentence(result);
        promises.expectNothingLost(home, result);

        giveAll(home);
        permissions(home.paths.home, fs::perms{0700});
        permissions(home.paths.spoolDirectory(), fs::perms{0700});
        promises.expectGoodNextRun(home);
    }

    void expectKeptPlaceIsSaid(const std::string& place, int status,
                               const std::string& sentence) const {
        SCOPED_TRACE(place);
        const auto trouble = [&](const TestHome& home) { keep(home.paths.home / place); };
        expectSaid(trouble, status, sentence);
    }
};

TEST_F(AnotherUsersFilesForTheHost, ofTheDatabaseAreSaid) {
    expectKeptPlaceIsSaid("Tallowbrook.sqlite", 1,
                          "Tallowbrook.sqlite cannot be opened: open failed: Permission denied.");
    for (const char* companion : {"Tallowbrook.sqlite-wal", "Tallowbrook.sqlite-shm"})
        expectKeptPlaceIsSaid(companion, 1, "tallowbrook: The database ");
}

TEST_F(AnotherUsersFilesForTheHost, ofTheHostLockAreSaid) {
    expectKeptPlaceIsSaid("host.lock", 1,
                          "The lock of this home cannot be taken: open failed: Permission denied.");
}

TEST_F(AnotherUsersFilesForTheHost, ofTheSpoolAreSaid) {
    const std::string sentence =
        "The spool could not be claimed: io-open-lock-errno" + refused + ". Its events are kept.";
    for (const char* place : {"spool", "spool/spool.lock"})
        expectKeptPlaceIsSaid(place, 1, sentence);
    for (const char* place : {"spool/events.jsonl", "spool/overflow-2-1-A.jsonl"})
        expectKeptPlaceIsSaid(place, 1,
                              "could not be read: open failed: Permission denied. It is kept.");
}

TEST_F(AnotherUsersFilesForTheHost, ofTheLogDoNotStopIt) {
    for (const char* place : {"logs", "logs/app.log"}) expectKeptPlaceIsSaid(place, 0, "");
}

TEST_F(AnotherUsersFilesForTheHost, includingTheWholeHomeAreSaid) {
    const auto keepHome = [](const TestHome& home) { keep(home.paths.home); };
    expectSaid(keepHome, 1, " cannot be opened: ");
}

TEST_F(AnotherUsersFilesForTheHost, aHomeThatMayOnlyBeReadIsSaid) {
    const auto protect = [](const TestHome& home) {
        ASSERT_EQ(chown(home.paths.home.c_str(), 0, 0), 0);
        permissions(home.paths.home, fs::perms{0755});
        // The log of the database has to be made anew, which the home does not allow.
        for (const char* suffix : {"-wal", "-shm"})
            remove(fs::path{home.paths.databaseFile().string() + suffix});
    };
    TestHome home;
    prepareFirstRun(home);
    const auto promises = HostPromises::of(home);
    giveAll(home);
    protect(home);
    const ProgramResult result = runAsUser(home.hostCall({"watch", "--once"}));
    EXPECT_EQ(result.status, 1);
    HostPromises::expectSentence(result);
    promises.expectNothingLost(home, result);
}

// Its files may be used by name, so the events go into it and are claimed, but nobody finds them.
TEST_F(AnotherUsersFilesForTheHost, aSpoolThatMayNotBeListedIsSaid) {
    const auto hide = [](const TestHome& home) {
        permissions(home.paths.spoolDirectory(), fs::perms{0300});
    };
    expectSaid(hide, 1, "tallowbrook: The spool ");
}

}  // namespace
}  // namespace tallowbrook
