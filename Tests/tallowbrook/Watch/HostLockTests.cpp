#include "Watch/HostLock.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"
#include "Support/LockHolder.h"
#include "Support/OrdinaryUser.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

struct HostLockOfHome : testing::Test {
    TemporaryDirectory directory;
    TallowbrookPaths paths{directory.path / "data"};

    // Whether this process gets the lock now.
    bool isFree() const {
        const auto lock = HostLock::tryAcquire(paths);
        return lock && lock->has_value();
    }
};

TEST_F(HostLockOfHome, isHeldForAsLongAsItsValueLives) {
    {
        const auto lock = HostLock::tryAcquire(paths);
        ASSERT_TRUE(lock && *lock);
        EXPECT_TRUE(HostLock::isHeld(paths));
        EXPECT_FALSE(isFree());
    }
    EXPECT_FALSE(HostLock::isHeld(paths));
    EXPECT_TRUE(isFree());
}

TEST_F(HostLockOfHome, tellsWhoLeadsAndSinceWhenOnceItIsSigned) {
    const auto since = std::chrono::floor<std::chrono::milliseconds>(currentInstant());
    EXPECT_FALSE(HostLock::holder(paths));
    {
        const auto lock = HostLock::tryAcquire(paths);
        ASSERT_TRUE(lock && *lock);
        (*lock)->sign(since);
        const auto holder = HostLock::holder(paths);
        ASSERT_TRUE(holder);
        EXPECT_EQ(holder->pid, getpid());
        EXPECT_EQ(holder->since, since);
    }
    EXPECT_FALSE(HostLock::holder(paths)) << "the name stays, the lock does not";

    const auto next = HostLock::tryAcquire(paths);
    ASSERT_TRUE(next && *next);
    const auto holder = HostLock::holder(paths);
    ASSERT_TRUE(holder);
    EXPECT_FALSE(holder->pid) << "of an earlier holder";
}

TEST_F(HostLockOfHome, goesWithItsValue) {
    auto lock = HostLock::tryAcquire(paths);
    ASSERT_TRUE(lock && *lock);
    const std::optional<HostLock> moved = std::move(*lock);
    lock->reset();
    EXPECT_TRUE(HostLock::isHeld(paths));
}

TEST_F(HostLockOfHome, isRefusedWhileAnotherProcessHoldsIt) {
    create_directories(paths.home);
    LockHolder holder{HostLock::file(paths)};
    ASSERT_TRUE(holder.holds);
    EXPECT_TRUE(HostLock::isHeld(paths));
    const auto lock = HostLock::tryAcquire(paths);
    ASSERT_TRUE(lock);
    EXPECT_FALSE(lock->has_value());
}

TEST_F(HostLockOfHome, isFreeOnceItsHolderWasKilled) {
    create_directories(paths.home);
    LockHolder holder{HostLock::file(paths)};
    ASSERT_TRUE(holder.holds);
    holder.kill();
    EXPECT_FALSE(HostLock::isHeld(paths));
    EXPECT_TRUE(isFree());
}

TEST_F(HostLockOfHome, makesTheHomeAndAFileOfTheOwnersAlone) {
    const FileModeMask none{0};
    EXPECT_TRUE(isFree());
    EXPECT_EQ(modeOf(paths.home.c_str()), 0700U);
    EXPECT_EQ(modeOf(HostLock::file(paths).c_str()), 0600U);
}

TEST_F(HostLockOfHome, isNotHeldWhereThereIsNoHomeAndLookingMakesNone) {
    EXPECT_FALSE(HostLock::isHeld(paths));
    EXPECT_FALSE(exists(paths.home));
}

TEST_F(HostLockOfHome, cannotBeTakenInAHomeThatIsAFile) {
    writeContents(paths.home, "");
    const auto lock = HostLock::tryAcquire(paths);
    ASSERT_FALSE(lock);
    EXPECT_EQ(lock.error(), (FileError{"stat", ENOTDIR}));
    EXPECT_FALSE(HostLock::isHeld(paths));
}

TEST_F(HostLockOfHome, canBeTakenAgainWhateverTheUmaskWas) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    ASSERT_TRUE(user->own(directory.path));
    const auto outcome = inChildProcess([&]() -> std::string {
        if (!user->become()) return "still another user";
        const FileModeMask masked{0777};
        return isFree() && isFree() ? "taken twice" : "refused";
    });
    EXPECT_EQ(outcome, "taken twice");
    EXPECT_EQ(modeOf(HostLock::file(paths).c_str()), 0600U);
}

TEST_F(HostLockOfHome, cannotBeTakenWhereAPipeIsInTheWay) {
    create_directories(paths.home);
    ASSERT_EQ(mkfifo(HostLock::file(paths).c_str(), 0600), 0);
    const auto lock = HostLock::tryAcquire(paths);
    ASSERT_FALSE(lock);
    EXPECT_EQ(lock.error(), (FileError{"open", EINVAL}));
    EXPECT_EQ(inChildProcess([&] { return HostLock::isHeld(paths) ? "held" : "free"; }), "free");
}

TEST_F(HostLockOfHome, cannotBeTakenWhereADirectoryIsInTheWay) {
    create_directories(HostLock::file(paths));
    const auto lock = HostLock::tryAcquire(paths);
    ASSERT_FALSE(lock);
    EXPECT_EQ(lock.error(), (FileError{"open", EISDIR}));
}

}  // namespace
}  // namespace tallowbrook::host
