#include "Loop/ChildPrograms.h"

#include <gtest/gtest.h>

#include <csignal>
#include <optional>

#include "Support/RepeatedText.h"
#include "System/FileDescriptor.h"

namespace tallowbrook::host {
namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;

struct ChildProgramsOfALoop : testing::Test {
    PollLoop loop;
    ChildPrograms children{loop};
    std::vector<std::string> ended;

    std::expected<void, int> shell(const std::string& script, milliseconds limit = minutes{1}) {
        return children.run("/bin/sh", {"-c", script}, limit,
                            [this](int status, const std::string& output) {
                                ended.push_back(std::to_string(status) + " " + output);
                            });
    }
    void runUntilEnded(std::size_t count) {
        while (ended.size() < count) loop.runOnce();
    }
};

TEST_F(ChildProgramsOfALoop, tellOfTheirEndWithStatusAndOutput) {
    ASSERT_TRUE(shell("echo said; exit 3"));
    runUntilEnded(1);
    EXPECT_EQ(ended, std::vector<std::string>{"3 said\n"});
}

TEST_F(ChildProgramsOfALoop, runAtOnce) {
    ASSERT_TRUE(shell("sleep 600", milliseconds{300}));
    ASSERT_TRUE(shell("exit 0"));
    runUntilEnded(1);
    EXPECT_EQ(ended.front(), "0 ");
    runUntilEnded(2);
    EXPECT_EQ(ended.back(), std::to_string(SIGKILL) + " ");
}

TEST_F(ChildProgramsOfALoop, areKilledAlsoWhereTheyHaveClosedTheirOutputOrPassedItOn) {
    ASSERT_TRUE(shell("exec >&-; exec sleep 600", milliseconds{100}));
    ASSERT_TRUE(shell("sleep 2 & exec sleep 600", milliseconds{100}));
    runUntilEnded(2);
    EXPECT_EQ(ended, std::vector<std::string>(2, std::to_string(SIGKILL) + " "));
}

TEST_F(ChildProgramsOfALoop, areKeptFromFillingTheMemory) {
    ASSERT_TRUE(shell("head -c 1000000 /dev/zero | tr '\\0' x"));
    runUntilEnded(1);
    EXPECT_EQ(ended.front(), "0 " + repeated("x", 4096));
}

TEST_F(ChildProgramsOfALoop, getEveryWordAsItIsAndTellWhatTheyComplainOfTooWhereThatIsAskedFor) {
    const auto keep = [this](int, const std::string& output) { ended.push_back(output); };
    ASSERT_TRUE(children.run("/bin/sh", {"-c", "echo \"$1\"; echo no >&2", "sh", "a b $HOME ' ;"},
                             minutes{1}, keep, ChildPrograms::Kept::outputAndErrors));
    EXPECT_TRUE(children.isAnyRunning());
    runUntilEnded(1);
    EXPECT_EQ(ended.front(), "a b $HOME ' ;\nno\n");
    EXPECT_FALSE(children.isAnyRunning());
}

TEST_F(ChildProgramsOfALoop, thatAreNotThereAreAnError) {
    EXPECT_EQ(children.run("/no/such/program", {}, minutes{1}, {}), std::unexpected(ENOENT));
}

}  // namespace
}  // namespace tallowbrook::host
