#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "EventBridge/SpoolLock.h"
#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"
#include "Support/Outcome.h"
#include "Support/TemporaryDirectory.h"

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

}  // namespace
}  // namespace tallowbrook
