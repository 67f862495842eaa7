#include "System/RandomHex.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace tallowbrook {
namespace {

TEST(RandomHex32, isUpToEightLowerCaseDigitsThatHardlyEverComeAgain) {
    constexpr std::size_t draws = 1000;
    std::set<std::string> drawn;
    for (std::size_t i = 0; i < draws; ++i) {
        const auto digits = randomHex32();
        ASSERT_TRUE(digits);
        EXPECT_TRUE(!digits->empty() && digits->size() <= 8) << *digits;
        EXPECT_EQ(digits->find_first_not_of("0123456789abcdef"), std::string::npos) << *digits;
        EXPECT_TRUE(*digits == "0" || digits->front() != '0') << *digits;
        drawn.insert(*digits);
    }
    EXPECT_GT(drawn.size(), draws / 2);
}

}  // namespace
}  // namespace tallowbrook
