#include <gtest/gtest.h>

#include "TestHome.h"

namespace tallowbrook {
namespace {

struct Row {
    const char* why;
    std::optional<std::string> dataHome;  // XDG_DATA_HOME
    std::filesystem::path expected;       // below the test's directory
};

ProgramResult hookAtDefaultHome(const TestHome& home, std::vector<std::string> arguments,
                                const std::optional<std::string>& dataHome) {
    ProgramCall call = home.plainHookCall(std::move(arguments), claudePayload("Stop"));
    call.environment["XDG_DATA_HOME"] = dataHome;
    return run(call);
}

TEST(HelperDefaultHome, followsTheUsersDataDirectory) {
    for (const auto& [why, dataHome, expected] : {
             Row{"nothing said", std::nullopt, "user/.local/share/Tallowbrook"},
             Row{"empty counts as unset", "", "user/.local/share/Tallowbrook"},
             Row{"so does a relative one", "share", "user/.local/share/Tallowbrook"},
         }) {
        const TestHome home;
        EXPECT_EQ(hookAtDefaultHome(home, {"claude-code"}, dataHome), quiet) << why;
        EXPECT_EQ(TestHome::spooled({home.directory.path / expected}).size(), 1U) << why;
    }
    const TestHome home;
    EXPECT_EQ(hookAtDefaultHome(home, {"claude-code"}, home.directory.path / "share"), quiet);
    EXPECT_EQ(TestHome::spooled({home.directory.path / "share" / "Tallowbrook"}).size(), 1U);
}

TEST(HelperDefaultHome, isUsedWhenHomeIsTheLastWord) {
    const TestHome home;
    EXPECT_EQ(hookAtDefaultHome(home, {"claude-code", "--home"}, std::nullopt), quiet);
    const TallowbrookPaths standard{home.directory.path / "user/.local/share/Tallowbrook"};
    EXPECT_EQ(TestHome::spooled(standard).size(), 1U);
    EXPECT_EQ(TestHome::logged(standard).size(), 0U);
}

TEST(HelperDefaultHome, isNotUsedWhenAnEarlierHomeWasGiven) {
    const TestHome home;
    EXPECT_EQ(hookAtDefaultHome(home, {"--home", "near", "claude-code", "--home"}, std::nullopt),
              quiet);
    EXPECT_EQ(TestHome::spooled({home.directory.path / "near"}).size(), 1U);
}

TEST(HelperDefaultHome, isTheHostsToo) {
    const TestHome home;
    EXPECT_EQ(hookAtDefaultHome(home, {"claude-code"}, std::nullopt), quiet);
    const auto result = run(home.plainHostCall({"watch", "--once"}));
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("Claude Code finished: proj"), std::string::npos) << result.output;
    EXPECT_TRUE(exists(home.directory.path / "user/.local/share/Tallowbrook/Tallowbrook.sqlite"));
}

}  // namespace
}  // namespace tallowbrook
