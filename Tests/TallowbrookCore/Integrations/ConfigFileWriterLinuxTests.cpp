// Steps of a replacement that the system refuses.
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <string>
#include <vector>

#include "ConfigFileSamples.h"
#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"

namespace tallowbrook {
namespace {

class ConfigFileStepTest : public ConfigFileTest {
 protected:
    // The outcome of an application in which these calls fail; the file must stay as it was.
    void expectHarmless(const std::vector<long>& calls, int error, bool isBackupKept) const {
        writeContents(config, "old");
        const auto plan = planTo("new");
        const auto seen = inChildProcess([&]() -> std::string {
            return failSystemCalls(calls, error) ? applied(plan) : noFilter;
        });
        if (seen == noFilter) GTEST_SKIP() << noFilter;
        EXPECT_TRUE(seen && seen->starts_with("Could not write ") &&
                    seen->ends_with(": " + reasonOf(error)))
            << seen.value_or("absent");
        EXPECT_EQ(contentsOf(config), "old");
        EXPECT_EQ(namesIn(directory), Names{"settings.json"});
        EXPECT_EQ(kept(), isBackupKept ? Names{"old"} : Names{});
    }
};

TEST_F(ConfigFileStepTest, aRenameThatFailsLeavesTheOldFileAndNoOther) {
    expectHarmless(renameCalls(), EIO, true);
}

TEST_F(ConfigFileStepTest, aWriteThatDoesNotReachTheDiskLeavesTheOldFileAndNoOther) {
    expectHarmless({SYS_fsync}, EIO, false);
}

TEST_F(ConfigFileStepTest, aModeThatCannotBeSetLeavesTheOldFileAndNoOther) {
    expectHarmless({SYS_fchmod}, EPERM, false);
}

}  // namespace
}  // namespace tallowbrook
