#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include "EventBridge/TallowbrookPaths.h"
#include "Support/EnvironmentVariable.h"

namespace tallowbrook {
namespace {

TEST(TallowbrookPathsLinux, theDefaultHomeFollowsTheEnvironment) {
    struct Row {
        const char* why;
        std::optional<std::string> dataHome;
        std::string home;
        const char* expected;
    };
    for (const auto& [why, dataHome, home, expected] : {
             Row{"absolute", "/data", "/home/u", "/data/Tallowbrook"},
             Row{"with a slash at its end", "/data/", "/home/u", "/data/Tallowbrook"},
             Row{"the root", "/", "/home/u", "/Tallowbrook"},
             Row{"unset", std::nullopt, "/home/u", "/home/u/.local/share/Tallowbrook"},
             Row{"empty", "", "/home/u", "/home/u/.local/share/Tallowbrook"},
             Row{"relative", "data", "/home/u", "/home/u/.local/share/Tallowbrook"},
             Row{"relative with a dot", "./data", "/home/u", "/home/u/.local/share/Tallowbrook"},
             Row{"not expanded", "~/data", "/home/u", "/home/u/.local/share/Tallowbrook"},
             Row{"unset, home is the root", std::nullopt, "/", "/.local/share/Tallowbrook"},
         }) {
        const EnvironmentVariable data{"XDG_DATA_HOME", dataHome};
        const EnvironmentVariable user{"HOME", home};
        EXPECT_EQ(TallowbrookPaths::defaultHome().native(), expected) << why;
        EXPECT_EQ(TallowbrookPaths::standard().home.native(), expected) << why;
    }
}

TEST(TallowbrookPathsLinux, theDefaultHomeFallsBackToTheAccount) {
    const passwd* account = getpwuid(getuid());
    if (account == nullptr || account->pw_dir[0] != '/') GTEST_SKIP() << "no account entry here";
    const auto expected =
        std::filesystem::path{account->pw_dir} / ".local" / "share" / "Tallowbrook";
    const EnvironmentVariable data{"XDG_DATA_HOME", std::nullopt};
    for (const auto& home : {std::optional<std::string>{}, std::optional<std::string>{""},
                             std::optional<std::string>{"home/u"}}) {
        const EnvironmentVariable user{"HOME", home};
        EXPECT_EQ(TallowbrookPaths::defaultHome(), expected) << home.value_or("unset");
    }
}

}  // namespace
}  // namespace tallowbrook
