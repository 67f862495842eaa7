#include "Text/Digits.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace tallowbrook {
namespace {

TEST(Digits, areTakenFromTheFront) {
    std::string_view text = "0129a3";
    EXPECT_EQ(takeDigits(text), "0129");
    EXPECT_EQ(text, "a3");
    EXPECT_EQ(takeDigits(text), "");
    EXPECT_EQ(text, "a3");
    text.remove_prefix(1);
    EXPECT_EQ(takeDigits(text), "3");
    EXPECT_EQ(takeDigits(text), "");
}

TEST(Digits, makeANumberOfTheWholeText) {
    EXPECT_EQ(parseNumber<int>("0"), 0);
    EXPECT_EQ(parseNumber<int>("-007"), -7);
    EXPECT_EQ(parseNumber<std::int64_t>("9223372036854775807"), INT64_MAX);
    EXPECT_EQ(parseNumber<std::int64_t>("-9223372036854775808"), INT64_MIN);
    for (const char* text : {"", "-", "+1", " 1", "1 ", "1x", "x1", "0x1", "1.0", "--1",
                             "9223372036854775808", "-9223372036854775809", "\u0661"})
        EXPECT_FALSE(parseNumber<std::int64_t>(text)) << text;
    EXPECT_FALSE(parseNumber<unsigned>("-1"));
    EXPECT_FALSE(parseNumber<unsigned>("-0"));
}

}  // namespace
}  // namespace tallowbrook
