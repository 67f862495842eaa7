#include "EventBridge/SpoolLock.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"
#include "Support/LockHolder.h"
#include "Support/OrdinaryUser.h"
#include "Support/Outcome.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

constexpr Seconds once{0};
constexpr Seconds aMinute{60};

class SpoolLockTest : public testing::Test {
 protected:
    SpoolLockTest() { std::filesystem::create_directories(paths.spoolDirectory()); }

    TemporaryDirectory temporary;
    TallowbrookPaths paths{temporary.path};
};

TEST_F(SpoolLockTest, createsTheLockFileForItsOwnerAlone) {
    const FileModeMask masked{0};
    EXPECT_EQ(outcomeOf(SpoolLock::acquire(paths, once)), "ok");
    EXPECT_EQ(modeOf(paths.spoolLockFile().c_str()), mode_t{0600});
    EXPECT_EQ(std::filesystem::file_size(paths.spoolLockFile()), 0U);
}

TEST_F(SpoolLockTest, leavesAnExistingLockFileAsItIs) {
    writeContents(paths.spoolLockFile(), "anything");
    chmod(paths.spoolLockFile().c_str(), 0644);
    EXPECT_EQ(outcomeOf(SpoolLock::acquire(paths, once)), "ok");
    EXPECT_EQ(modeOf(paths.spoolLockFile().c_str()), mode_t{0644});
    EXPECT_EQ(contentsOf(paths.spoolLockFile()), "anything");
}

TEST_F(SpoolLockTest, isTakenByOneAtATime) {
    {
        const auto first = SpoolLock::acquire(paths, once);
        ASSERT_EQ(outcomeOf(first), "ok");
        for (const Seconds timeout : {once, Seconds{0.05}, Seconds{-1}})
            EXPECT_EQ(outcomeOf(SpoolLock::acquire(paths, timeout)), "lock-timeout");
        EXPECT_EQ(inChildProcess([&] { return outcomeOf(SpoolLock::acquire(paths, once)); }),
                  "lock-timeout");
    }
    EXPECT_EQ(inChildProcess([&] { return outcomeOf(SpoolLock::acquire(paths, once)); }), "ok");
}

TEST_F(SpoolLockTest, isWaitedForUntilItsHolderGivesItBack) {
    LockHolder holder{paths.spoolLockFile()};
    ASSERT_TRUE(holder.holds);
    holder.releaseSoon();
    EXPECT_EQ(outcomeOf(SpoolLock::acquire(paths, aMinute)), "ok");
}

TEST_F(SpoolLockTest, isGivenBackThoughAChildStillHasTheFileOpen) {
    std::optional<ChildProcess> child;
    {
        const auto lock = SpoolLock::acquire(paths, once);
        ASSERT_EQ(outcomeOf(lock), "ok");
        child.emplace([]() -> std::string {
            while (true) pause();
        });
    }
    EXPECT_EQ(outcomeOf(SpoolLock::acquire(paths, once)), "ok");
}

TEST_F(SpoolLockTest, movesWithItsValue) {
    auto lock = SpoolLock::acquire(paths, once);
    ASSERT_EQ(outcomeOf(lock), "ok");
    {
        const SpoolLock moved{std::move(*lock)};
        EXPECT_EQ(outcomeOf(SpoolLock::acquire(paths, once)), "lock-timeout");
    }
    EXPECT_EQ(outcomeOf(SpoolLock::acquire(paths, once)), "ok");
}

TEST_F(SpoolLockTest, canBeTakenAgainWhateverTheUmaskWas) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    for (const mode_t mask : {mode_t{0777}, mode_t{0400}, mode_t{0200}}) {
        std::filesystem::remove(paths.spoolLockFile());
        ASSERT_TRUE(user->own(temporary.path) && user->own(paths.spoolDirectory()));
        const auto outcome = inChildProcess([&]() -> std::string {
            if (!user->become()) return "still another user";
            const FileModeMask masked{mask};
            const std::string first = outcomeOf(SpoolLock::acquire(paths, once));
            return first + " " + outcomeOf(SpoolLock::acquire(paths, once));
        });
        EXPECT_EQ(outcome, "ok ok") << mask;
        EXPECT_EQ(modeOf(paths.spoolLockFile().c_str()), mode_t{0600}) << mask;
    }
}

TEST_F(SpoolLockTest, keepsTheModeOfAnExistingFileThatItsOwnerMayNotUse) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    writeContents(paths.spoolLockFile(), "");
    chmod(paths.spoolLockFile().c_str(), 0);
    for (const auto& location : {temporary.path, paths.spoolDirectory(), paths.spoolLockFile()})
        ASSERT_TRUE(user->own(location));
    const auto outcome = inChildProcess([&]() -> std::string {
        if (!user->become()) return "still another user";
        return outcomeOf(SpoolLock::acquire(paths, once));
    });
    EXPECT_EQ(outcome, ioCode("open-lock", EACCES));
    EXPECT_EQ(modeOf(paths.spoolLockFile().c_str()), mode_t{0});
}

TEST_F(SpoolLockTest, followsALinkToAFileThatIsStillMissing) {
    const auto elsewhere = temporary.path / "elsewhere";
    std::filesystem::create_symlink(elsewhere, paths.spoolLockFile());
    EXPECT_EQ(outcomeOf(SpoolLock::acquire(paths, once)), "ok");
    EXPECT_TRUE(std::filesystem::is_regular_file(elsewhere));
}

TEST_F(SpoolLockTest, isNoPipe) {
    ASSERT_EQ(mkfifo(paths.spoolLockFile().c_str(), 0600), 0);
    EXPECT_EQ(inChildProcess([&] { return outcomeOf(SpoolLock::acquire(paths, once)); }),
              ioCode("open-lock", EINVAL));
}

TEST_F(SpoolLockTest, needsALockFileThatCanBeOpened) {
    std::filesystem::create_directory(paths.spoolLockFile());
    EXPECT_EQ(outcomeOf(SpoolLock::acquire(paths, once)), ioCode("open-lock", EISDIR));
    const TallowbrookPaths missing{temporary.path / "missing"};
    EXPECT_EQ(outcomeOf(SpoolLock::acquire(missing, once)), ioCode("open-lock", ENOENT));
    EXPECT_FALSE(std::filesystem::exists(missing.home));
}

}  // namespace
}  // namespace tallowbrook
