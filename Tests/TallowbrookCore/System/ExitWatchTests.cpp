#include "System/ExitWatch.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>

#include <csignal>

#include "System/ProcessLaunch.h"

namespace tallowbrook {
namespace {

pid_t startSleep() {
    const auto child = ProcessLaunch::start("/bin/sleep", {"1000"}, FileDescriptor{});
    EXPECT_TRUE(child);
    return child.value_or(-1);
}

// Waits as long as it takes where `milliseconds` is negative.
bool isReady(const ExitWatch& watch, int milliseconds) {
    pollfd queue{watch.descriptor(), POLLIN, 0};
    return poll(&queue, 1, milliseconds) > 0;
}

TEST(ExitWatch, tellsOfEachChildThatHasExitedAndLeavesItToBeReaped) {
    ExitWatch watch;
    const pid_t first = startSleep();
    const pid_t second = startSleep();
    ASSERT_TRUE(watch.add(first) && watch.add(second));
    EXPECT_FALSE(isReady(watch, 0));
    for (const pid_t child : {second, first}) {
        kill(child, SIGKILL);
        EXPECT_TRUE(isReady(watch, 60'000));
        watch.consume();
        EXPECT_FALSE(isReady(watch, 0)) << "the other one still runs";
        EXPECT_EQ(waitpid(child, nullptr, 0), child);
    }
}

TEST(ExitWatch, watchesNoProcessThatIsNotThere) {
    const pid_t child = startSleep();
    kill(child, SIGKILL);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_FALSE(ExitWatch{}.add(child));
}

}  // namespace
}  // namespace tallowbrook
