#include "Output/NearestWord.h"

#include <gtest/gtest.h>

namespace tallowbrook::host {
namespace {

const std::vector<std::string> commands{"watch", "status", "sessions", "focus", "next", "wait"};

TEST(NearestWord, isTheOneWithTheFewestSlips) {
    for (const auto& [typed, meant] :
         {std::pair{"sesions", "sessions"}, std::pair{"sessionss", "sessions"},
          std::pair{"statsu", "status"}, std::pair{"waich", "watch"}, std::pair{"foucs", "focus"},
          std::pair{"wat", "wait"}})
        EXPECT_EQ(nearestWord(typed, commands), meant) << typed;
}

TEST(NearestWord, isNoneWhereNothingIsNear) {
    for (const auto* typed : {"", "x", "frobnicate", "listen"})
        EXPECT_EQ(nearestWord(typed, commands), "") << typed;
    EXPECT_EQ(nearestWord(std::string(100'000, 's'), commands), "");
}

TEST(NearestWord, isSuggestedInAQuestion) {
    EXPECT_EQ(suggestion("nxet", commands), "; did you mean \"next\"?");
    EXPECT_EQ(suggestion("listen", commands), "");
}

}  // namespace
}  // namespace tallowbrook::host
