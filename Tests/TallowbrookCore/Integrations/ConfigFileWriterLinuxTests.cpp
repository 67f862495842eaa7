// Steps of a replacement that the system refuses.
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ConfigFileSamples.h"
#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"

namespace tallowbrook {
namespace {

class ConfigFileStepTest : public ConfigFileTest {
 protected:
    // What the user is told of an application in which these calls fail; absent when they cannot.
    std::optional<std::string> seenWhen(const std::vector<long>& calls, int error) const {
        const auto plan = planTo("new");
        const auto seen = inChildProcess([&]() -> std::string {
            return failSystemCalls(calls, error) ? applied(plan) : noFilter;
        });
        if (seen == noFilter) return std::nullopt;
        return seen.value_or("the child crashed");
    }

    std::string notWritten(int error) const {
        return "Could not write " + config.string() + ": " + reasonOf(error);
    }
};

TEST_F(ConfigFileStepTest, aRenameThatFailsLeavesTheOldFileAndNoOther) {
    writeContents(config, "old");
    const auto seen = seenWhen(renameCalls(), EIO);
    if (!seen) GTEST_SKIP() << noFilter;
    EXPECT_EQ(seen, notWritten(EIO));
    EXPECT_EQ(contentsOf(config), "old");
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
    EXPECT_EQ(kept(), Names{"old"});
}

// An older kernel, or a file system that cannot exchange names.
TEST_F(ConfigFileStepTest, whereNamesCannotBeExchangedTheFileIsReplacedAllTheSame) {
    for (const int error : {EINVAL, ENOSYS}) {
        for (const bool hasFile : {true, false}) {
            std::filesystem::remove_all(directory);
            std::filesystem::create_directories(directory);
            if (hasFile) writeContents(config, "old");
            const auto seen = seenWhen({SYS_renameat2}, error);
            if (!seen) GTEST_SKIP() << noFilter;
            EXPECT_EQ(seen, "");
            EXPECT_EQ(contentsOf(config), "new");
            EXPECT_EQ(namesIn(directory), Names{"settings.json"});
        }
    }
}

TEST_F(ConfigFileStepTest, aBackupThatDoesNotReachTheDiskLeavesTheOldFileAlone) {
    writeContents(config, "old");
    const auto seen = seenWhen({SYS_fsync}, EIO);
    if (!seen) GTEST_SKIP() << noFilter;
    EXPECT_TRUE(seen->starts_with("Could not write " + backups.string())) << *seen;
    EXPECT_EQ(contentsOf(config), "old");
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
    EXPECT_EQ(kept(), Names{});
}

TEST_F(ConfigFileStepTest, withoutRandomBytesForItsBackupAFileIsLeftAlone) {
    writeContents(config, "old");
    const auto plan = planTo("new");
    const auto seen = inChildProcess(
        [&]() -> std::string { return refuseRandomBytes() ? applied(plan) : notRefused; });
    if (seen == notRefused) GTEST_SKIP() << notRefused;
    EXPECT_EQ(seen, "Could not write " + backups.string() + ": " + reasonOf(EIO));
    EXPECT_EQ(contentsOf(config), "old");
    EXPECT_EQ(kept(), Names{});
}

// A new file, since the backup of an old one would be what fails.
TEST_F(ConfigFileStepTest, aNewFileThatCannotBeFinishedLeavesNone) {
    for (const auto& [call, error] : {std::pair{SYS_fsync, EIO}, std::pair{SYS_fchmod, EPERM}}) {
        std::filesystem::create_directories(directory);
        const auto seen = seenWhen({call}, error);
        if (!seen) GTEST_SKIP() << noFilter;
        EXPECT_EQ(seen, notWritten(error));
        EXPECT_EQ(namesIn(directory), Names{});
    }
}

}  // namespace
}  // namespace tallowbrook
