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
    for (const auto* word : {"--version", "-V", "version"})
        EXPECT_EQ(run(home.plainHostCall({word})),
                  (ProgramResult{.status = 0, .output = "tallowbrook 0.1.0\n"}))
            << word;
    EXPECT_TRUE(std::filesystem::is_empty(home.directory.path / "user"));
}

TEST(HostCommandLine, helpsWhereItIsAskedFor) {
    const TestHome home;
    for (const auto& arguments : {Words{"help"}, Words{"--help"}, Words{"-h"},
                                  Words{"watch", "--help"}, Words{"help", "sessions"}}) {
        const ProgramResult result = run(home.plainHostCall(arguments));
        EXPECT_EQ(result.status, 0) << testing::PrintToString(arguments);
        EXPECT_EQ(result.errors, "") << testing::PrintToString(arguments);
        EXPECT_NE(result.output.find("Exit status: 0 done, 1 failed"), std::string::npos)
            << testing::PrintToString(arguments);
    }
    EXPECT_TRUE(std::filesystem::is_empty(home.directory.path / "user"));
}

TEST(HostCommandLine, withoutACommandTellsHowThingsStandAndWhereToGoOn) {
    const TestHome home;
    EXPECT_EQ(run(home.plainHostCall({})),
              (ProgramResult{.status = 0,
                             .output = "No session waits for you.\n"
                                       "No host runs, so nobody is told: \"tallowbrook watch\" is "
                                       "one.\n\n"
                                       "\"tallowbrook setup\" lets your agents report.\n"
                                       "\"tallowbrook help\" lists the commands.\n"}));
    EXPECT_TRUE(std::filesystem::is_empty(home.directory.path / "user"));
}

TEST(HostCommandLine, saysInWordsWhatIsWrongAndWhatWasMeantPerhaps) {
    const TestHome home;
    struct Row {
        Words arguments;
        const char* errors;
    };
    for (const auto& [arguments, errors] : {
             Row{{"sesions"}, "Unknown command \"sesions\"; did you mean \"sessions\"?"},
             Row{{"listen"},
                 "Unknown command \"listen\". \"tallowbrook help\" lists the commands."},
             Row{{"help", "fcous"}, "Unknown command \"fcous\"; did you mean \"focus\"?"},
             Row{{"sessions", "--al"}, "Unknown option \"--al\"; did you mean \"--all\"?"},
             Row{{"sessions", "extra"},
                 "\"extra\" is one word too many for \"sessions\". \"tallowbrook help "
                 "sessions\" shows its words."},
             Row{{"--home"}, "--home needs a value. \"tallowbrook help\" lists the commands."},
             Row{{"setup", "codx"},
                 "\"codx\" is none of claude-code, codex; did you mean \"codex\"?"},
             Row{{"status", "--short", "--format", "tmux"},
                 "--short and --format do not go together."},
         }) {
        const auto result = run(home.plainHostCall(arguments));
        EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(result.errors, std::string{"tallowbrook: "} + errors + "\n");
    }
}

TEST(HostCommandLine, explainsTheExitStatuses) {
    const TestHome home;
    const auto shown = run(home.plainHostCall({"help", "exit-codes"}));
    EXPECT_EQ(shown.status, 0);
    for (const auto* row : {"    0  done", "    4  agents are set up, but no host runs",
                            "    5  the session needs you", "  124  the time is over"})
        EXPECT_NE(shown.output.find(row), std::string::npos) << row;
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
