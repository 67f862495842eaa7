#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "EventBridge/SpoolLock.h"
#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"
#include "Support/LockHolder.h"
#include "Support/OpenFilesLinux.h"
#include "Support/Outcome.h"
#include "Support/TemporaryDirectory.h"
#include "Support/WaitUntil.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

// What `acquire` comes to when every flock(2) fails with `errorNumber`.
std::optional<std::string> outcomeWhenLockingFails(int errorNumber) {
    const TemporaryDirectory temporary;
    const TallowbrookPaths paths{temporary.path};
    fs::create_directories(paths.spoolDirectory());
    return inChildProcess([&]() -> std::string {
        if (!failSystemCalls({SYS_flock}, errorNumber)) return noFilter;
        return outcomeOf(SpoolLock::acquire(paths, Seconds{0.02}));
    });
}

TEST(SpoolLockLinux, failsAtOnceWhereThereIsNoLockingAndTriesAgainWhenInterrupted) {
    for (const auto& [errorNumber, outcome] :
         {std::pair{ENOLCK, ioCode("flock", ENOLCK)}, std::pair{EINTR, std::string{"lock-timeout"}},
          std::pair{EWOULDBLOCK, std::string{"lock-timeout"}}}) {
        const auto seen = outcomeWhenLockingFails(errorNumber);
        if (seen == noFilter) GTEST_SKIP() << *seen;
        EXPECT_EQ(seen, outcome) << errorNumber;
    }
}

// A waiter whose file was deleted meanwhile must not hold what later comers do not see.
TEST(SpoolLockLinux, isTheOneOfTheFileInPlaceWhenAnotherWasDeletedMeanwhile) {
    const TemporaryDirectory temporary;
    const TallowbrookPaths paths{temporary.path};
    fs::create_directories(paths.spoolDirectory());
    LockHolder holder{paths.spoolLockFile()};
    ASSERT_TRUE(holder.holds);
    ChildProcess waiter{[&] {
        const auto lock = SpoolLock::acquire(paths, Seconds{60});
        return outcomeOf(lock) + ", then " + outcomeOf(SpoolLock::acquire(paths, Seconds{0}));
    }};
    waitUntil([&] { return hasOpen(waiter.pid, paths.spoolLockFile()); });
    fs::remove(paths.spoolLockFile());
    holder.releaseSoon();
    EXPECT_EQ(waiter.result(), "ok, then lock-timeout");
}

}  // namespace
}  // namespace tallowbrook
