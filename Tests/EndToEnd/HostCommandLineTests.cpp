#include <gtest/gtest.h>

#include "TestHome.h"

namespace tallowbrook {
namespace {

using Words = std::vector<std::string>;

TEST(HostCommandLine, thatIsWrongEndsWithTwoAndSaysWhy) {
    for (const auto& arguments :
         {Words{"listen"}, Words{"watch", "--listen"}, Words{"sessions", "--once"},
          Words{"watch", "sessions"}, Words{"watch", "extra"}, Words{"watch", "--color=pink"},
          Words{"sessions", "extra"}, Words{"--home"}, Words{"watch", "--home"}, Words{"--unknown"},
          Words{"--once"}, Words{"-x", "watch"}, Words{"WATCH"}, Words{""}}) {
        const TestHome home;
        const ProgramResult result = run(home.plainHostCall(arguments));
        EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(result.output, "") << testing::PrintToString(arguments);
        EXPECT_NE(result.errors, "") << testing::PrintToString(arguments);
        EXPECT_TRUE(std::filesystem::is_empty(home.directory.path / "user"));
    }
}

TEST(HostCommandLine, printsItsVersion) {
    const TestHome home;
    EXPECT_EQ(run(home.plainHostCall({"--version"})),
              (ProgramResult{.status = 0, .output = "tallowbrook 0.1.0\n"}));
    EXPECT_TRUE(std::filesystem::is_empty(home.directory.path / "user"));
}

TEST(HostCommandLine, helpsWhereItIsAskedForAndWithoutACommand) {
    const TestHome home;
    for (const auto& arguments : {Words{}, Words{"--help"}, Words{"-h"}, Words{"watch", "--help"},
                                  Words{"sessions", "-h"}}) {
        const ProgramResult result = run(home.plainHostCall(arguments));
        EXPECT_EQ(result.status, 0) << testing::PrintToString(arguments);
        EXPECT_EQ(result.errors, "") << testing::PrintToString(arguments);
        EXPECT_NE(result.output.find("Exit status: 0 done, 1 failed"), std::string::npos)
            << testing::PrintToString(arguments);
    }
    EXPECT_TRUE(std::filesystem::is_empty(home.directory.path / "user"));
}

TEST(HostCommandLine, takesTheHomeBeforeAndBehindTheCommand) {
    struct Row {
        Words watch;
        Words sessions;
    };
    for (const auto& [watch, sessions] : {
             Row{{"--home", "near", "watch", "--once"}, {"--home", "near", "sessions"}},
             Row{{"watch", "--home", "near", "--once"}, {"sessions", "--home", "near", "--all"}},
             Row{{"watch", "--once", "--home", "near"}, {"sessions", "--all", "--home", "near"}},
             Row{{"--home=near", "watch", "--once"}, {"sessions", "--home=near"}},
         }) {
        const TestHome home;
        EXPECT_EQ(run(home.plainHookCall({"--home", "near", "claude-code"}, claudePayload("Stop"))),
                  quiet);
        const ProgramResult watched = run(home.plainHostCall(watch));
        EXPECT_EQ(watched.status, 0);
        EXPECT_NE(watched.output.find("Claude Code finished: proj"), std::string::npos)
            << watched.output;
        EXPECT_NE(run(home.plainHostCall(sessions)).output.find("completed"), std::string::npos);
        EXPECT_TRUE(exists(home.directory.path / "near" / "Tallowbrook.sqlite"));
    }
}

TEST(HostCommandLine, ofTwoHomesTheLastOneCounts) {
    const TestHome home;
    EXPECT_EQ(run(home.plainHostCall({"--home", "one", "watch", "--once", "--home", "two"})).status,
              0);
    EXPECT_FALSE(exists(home.directory.path / "one"));
    EXPECT_TRUE(exists(home.directory.path / "two" / "Tallowbrook.sqlite"));
}

}  // namespace
}  // namespace tallowbrook
