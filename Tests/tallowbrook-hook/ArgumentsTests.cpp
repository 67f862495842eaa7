#include "Arguments.h"

#include <gtest/gtest.h>

#include <string>

namespace tallowbrook::hook {
namespace {

using Words = std::vector<const char*>;
using Positional = std::vector<std::string_view>;

Arguments parsed(Words words) {
    words.insert(words.begin(), "tallowbrook-hook");
    return parseArguments(static_cast<int>(words.size()), words.data());
}

TEST(HookArguments, mayLackTheProgramsOwnName) {
    const Arguments arguments = parseArguments(0, nullptr);
    EXPECT_EQ(arguments.origin, EventOrigin::live);
    EXPECT_FALSE(arguments.home || arguments.wantsVersion);
    EXPECT_EQ(arguments.positional, Positional{});
}

TEST(HookArguments, homeTakesTheNextWord) {
    struct Row {
        Words words;
        std::optional<std::filesystem::path> home;
        Positional positional;
        EventOrigin origin = EventOrigin::live;
    };
    for (const auto& [words, home, positional, origin] : {
             Row{{"--home", "/a", "codex"}, "/a", {"codex"}},
             Row{{"codex", "--home"}, std::nullopt, {"codex"}},
             Row{{"--home", "/a", "--home"}, "/a", {}},
             Row{{"--home", "/a", "--home", "/b"}, "/b", {}},
             Row{{"--home", "--test", "codex"}, "--test", {"codex"}},
             Row{{"--home", "--home", "/a"}, "--home", {"/a"}},
             Row{{"--home", "", "codex"}, "", {"codex"}},
             Row{{"codex-notify", "--x", "", "--", "--test"},
                 {},
                 {"codex-notify", "--x", "", "--"},
                 EventOrigin::test},
         }) {
        const Arguments arguments = parsed(words);
        EXPECT_EQ(arguments.home, home) << testing::PrintToString(words);
        EXPECT_EQ(arguments.positional, positional) << testing::PrintToString(words);
        EXPECT_EQ(arguments.origin, origin) << testing::PrintToString(words);
        EXPECT_FALSE(arguments.wantsVersion) << testing::PrintToString(words);
    }
}

}  // namespace
}  // namespace tallowbrook::hook
