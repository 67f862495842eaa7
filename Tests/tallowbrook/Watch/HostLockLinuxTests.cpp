#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include "Support/ChildProcess.h"
#include "Support/LockHolder.h"
#include "Support/OpenFilesLinux.h"
#include "Support/TemporaryDirectory.h"
#include "Support/WaitUntil.h"
#include "Watch/HostLock.h"

namespace tallowbrook::host {
namespace {

std::string outcomeOfTrying(const TallowbrookPaths& paths) {
    const auto lock = HostLock::tryAcquire(paths);
    if (!lock) return lock.error().description();
    if (!*lock) return "busy";
    const auto second = HostLock::tryAcquire(paths);
    return second && *second ? "held twice" : "held once";
}

// What a host gets that had opened the lock file when somebody deleted it.
std::optional<std::string> outcomeWhenDeletedMeanwhile() {
    const TemporaryDirectory directory;
    const TallowbrookPaths paths{directory.path / "data"};
    create_directories(paths.home);
    LockHolder holder{HostLock::file(paths)};
    if (!holder.holds) return "not prepared";
    ChildProcess waiter{[&] { return outcomeOfTrying(paths); }};
    waitUntil([&] { return waiter.hasEnded() || hasOpen(waiter.pid, HostLock::file(paths)); });
    std::filesystem::remove(HostLock::file(paths));
    holder.kill();
    return waiter.result();
}

TEST(HostLockLinux, isTheOneOfTheFileInPlaceWhenAnotherWasDeletedMeanwhile) {
    // A host does not wait for long: on a busy machine it may give up before all this is done.
    std::optional<std::string> outcome{"busy"};
    for (int round = 0; round < 20 && outcome == "busy"; ++round)
        outcome = outcomeWhenDeletedMeanwhile();
    EXPECT_EQ(outcome, "held once");
}

}  // namespace
}  // namespace tallowbrook::host
