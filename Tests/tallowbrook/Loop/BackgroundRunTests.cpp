#include "Loop/BackgroundRun.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <memory>

namespace tallowbrook::host {
namespace {

using std::chrono::seconds;
using Output = std::optional<std::string>;

struct Outcome {
    bool isDone = false;
    Output output;
    BackgroundRun::Done done() {
        return [this](Output text) {
            isDone = true;
            output = std::move(text);
        };
    }
};

Output outputOf(const std::string& program, const std::vector<std::string>& arguments,
                seconds atMost = seconds{60}) {
    PollLoop loop;
    Outcome outcome;
    const BackgroundRun run{loop, program, arguments, atMost, outcome.done()};
    while (!outcome.isDone) loop.runOnce();
    EXPECT_FALSE(run.isRunning());
    return outcome.output;
}

TEST(BackgroundRun, givesWhatAProgramPrintsOnBothStreams) {
    EXPECT_EQ(outputOf("/bin/sh", {"-c", "echo out; echo error >&2"}), "out\nerror\n");
}

TEST(BackgroundRun, handsOverEveryWordAsItIs) {
    EXPECT_EQ(outputOf("/bin/echo", {"a b", "$HOME", "'", ";", ""}), "a b $HOME ' ; \n");
}

TEST(BackgroundRun, givesTheOutputOfAProgramThatFails) {
    EXPECT_EQ(outputOf("/bin/sh", {"-c", "echo no; exit 3"}), "no\n");
}

TEST(BackgroundRun, waitsForAProgramThatClosesItsOutputFirst) {
    EXPECT_EQ(outputOf("/bin/sh", {"-c", "echo a; exec >&- 2>&-; sleep 0.2"}), "a\n");
}

TEST(BackgroundRun, endsAProgramThatTakesTooLong) {
    EXPECT_EQ(outputOf("/bin/sleep", {"1000"}, seconds{0}), std::nullopt);
}

TEST(BackgroundRun, endsItsProgramWithItself) {
    PollLoop loop;
    Outcome outcome;
    auto run = std::make_unique<BackgroundRun>(loop, "/bin/sh",
                                               std::vector<std::string>{"-c", "exec sleep 1000"},
                                               seconds{60}, outcome.done());
    EXPECT_TRUE(run->isRunning());
    run.reset();
    EXPECT_FALSE(outcome.isDone);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no child is left, not even a dead one";
}

}  // namespace
}  // namespace tallowbrook::host
