// Where the signal's file lies when the session names no directory. Only root can build these
// places, for a user id without an account: everything happens in child processes under that id.
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>

#include "EventBridge/SpoolSignal.h"
#include "Support/ChildProcess.h"
#include "Support/EnvironmentVariable.h"
#include "Support/FileModeMask.h"
#include "Support/OrdinaryUser.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

class SpoolSignalDirectoryLinuxTest : public testing::Test {
 protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "only root can lend another user id";
        user = OrdinaryUser::find();
        if (!user) GTEST_SKIP() << OrdinaryUser::missing;
        own = "/tmp/tallowbrook-" + std::to_string(user->id);
        session = "/run/user/" + std::to_string(user->id);
        ASSERT_FALSE(fs::exists(fs::symlink_status(own)) || fs::exists(session));
        ASSERT_TRUE(user->own(temporary.path));
        sessionsWereMissing = fs::create_directories(session.parent_path());
    }

    void TearDown() override {
        if (!user) return;
        std::error_code ignored;
        fs::remove_all(own, ignored);
        fs::remove_all(session, ignored);
        if (sessionsWereMissing) fs::remove(session.parent_path(), ignored);
    }

    // "woken" when a post reaches an observer, else how the observer failed or "asleep".
    std::optional<std::string> roundTrip() const {
        return inChildProcess([&]() -> std::string {
            if (!user->become()) return "still another user";
            auto observer = SpoolSignal::Observer::start();
            SpoolSignal::post();
            if (!observer)
                return observer.error().step + " " + std::to_string(observer.error().errorNumber);
            pollfd descriptor{observer->fileDescriptor(), POLLIN, 0};
            const bool woken = poll(&descriptor, 1, 10'000) == 1 && observer->consume();
            return woken ? "woken" : "asleep";
        });
    }

    static bool hasSignal(const fs::path& directory) {
        return fs::exists(directory / SpoolSignal::name);
    }

    EnvironmentVariable runtime{"XDG_RUNTIME_DIR", std::nullopt};
    TemporaryDirectory temporary;
    std::optional<OrdinaryUser> user;
    fs::path own;      // the last resort
    fs::path session;  // what the system makes for a user who is logged in
    bool sessionsWereMissing = false;
    const std::string refused = "inotify_add_watch " + std::to_string(ENOTDIR);
};

TEST_F(SpoolSignalDirectoryLinuxTest, isTheUsersOwnUnderTmpWithoutASession) {
    EXPECT_EQ(roundTrip(), "woken");
    EXPECT_TRUE(hasSignal(own));
    EXPECT_EQ(modeOf(own.c_str()), mode_t{0700});
    struct stat status{};
    ASSERT_EQ(lstat(own.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, user->id);
    EXPECT_EQ(roundTrip(), "woken") << "once it is there";
}

TEST_F(SpoolSignalDirectoryLinuxTest, aNameThatIsNotAbsoluteCountsForNothing) {
    for (const char* name : {"", "runtime", "./runtime"}) {
        const EnvironmentVariable named{"XDG_RUNTIME_DIR", name};
        fs::remove_all(own);
        EXPECT_EQ(roundTrip(), "woken") << name;
        EXPECT_TRUE(hasSignal(own)) << name;
    }
}

TEST_F(SpoolSignalDirectoryLinuxTest, isTheOneOfTheSystemWhereTheUserOwnsIt) {
    fs::create_directory(session);
    ASSERT_TRUE(user->own(session));
    EXPECT_EQ(roundTrip(), "woken");
    EXPECT_TRUE(hasSignal(session));
    EXPECT_FALSE(fs::exists(own));
}

TEST_F(SpoolSignalDirectoryLinuxTest, isNotTheOneOfTheSystemWhereAnotherOwnsIt) {
    fs::create_directory(session);
    fs::permissions(session, fs::perms::all);
    EXPECT_EQ(roundTrip(), "woken");
    EXPECT_FALSE(hasSignal(session));
    EXPECT_TRUE(hasSignal(own));
}

TEST_F(SpoolSignalDirectoryLinuxTest, isNoneWhereItsPlaceUnderTmpIsALink) {
    fs::create_directory_symlink(temporary.path, own);
    EXPECT_EQ(roundTrip(), refused) << "a link of another's";
    EXPECT_TRUE(fs::is_empty(temporary.path));

    ASSERT_EQ(lchown(own.c_str(), user->id, static_cast<gid_t>(user->id)), 0);
    EXPECT_EQ(roundTrip(), refused) << "a link of the user's";
    EXPECT_TRUE(fs::is_empty(temporary.path));
}

TEST_F(SpoolSignalDirectoryLinuxTest, isNoneWhereItsPlaceUnderTmpIsAnothers) {
    fs::create_directory(own);
    fs::permissions(own, fs::perms::all);
    EXPECT_EQ(roundTrip(), refused);
    EXPECT_TRUE(fs::is_empty(own));
}

}  // namespace
}  // namespace tallowbrook
