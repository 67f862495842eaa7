#include <gtest/gtest.h>

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
             Row{"unset", std::nullopt, "/home/u", "/home/u/.local/share/Tallowbrook"},
             Row{"empty", "", "/home/u", "/home/u/.local/share/Tallowbrook"},
             Row{"relative", "data", "/home/u", "/home/u/.local/share/Tallowbrook"},
             Row{"unset, home is the root", std::nullopt, "/", "/.local/share/Tallowbrook"},
         }) {
        const EnvironmentVariable data{"XDG_DATA_HOME", dataHome};
        const EnvironmentVariable user{"HOME", home};
        EXPECT_EQ(TallowbrookPaths::defaultHome().native(), expected) << why;
        EXPECT_EQ(TallowbrookPaths::standard().home.native(), expected) << why;
    }
}

}  // namespace
}  // namespace tallowbrook
