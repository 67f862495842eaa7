#include "Text/Hex.h"

#include <gtest/gtest.h>

namespace tallowbrook {
namespace {

TEST(Hex, readsWhatItWritesInEitherCase) {
    for (const auto digits : {Hex::lowerDigits, Hex::upperDigits})
        for (unsigned byte = 0; byte <= 0xFF; ++byte) {
            std::string text;
            Hex::append(text, static_cast<std::uint8_t>(byte), digits);
            ASSERT_EQ(text.size(), 2U);
            EXPECT_EQ(*Hex::value(text[0]) << 4U | *Hex::value(text[1]), byte);
        }
    std::string text;
    Hex::append(text, 0x0F, Hex::lowerDigits);
    Hex::append(text, 0xA9, Hex::upperDigits);
    EXPECT_EQ(text, "0fA9");
}

TEST(Hex, knowsNoOtherDigits) {
    for (const char c : {'g', 'G', '/', ':', '@', '`', ' ', '-', '\0', '\xC1'})
        EXPECT_FALSE(Hex::value(c)) << c;
}

}  // namespace
}  // namespace tallowbrook
