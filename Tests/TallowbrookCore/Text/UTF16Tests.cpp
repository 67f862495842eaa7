#include "Text/UTF16.h"

#include <gtest/gtest.h>

namespace tallowbrook {
namespace {

TEST(UTF16, tellsHighAndLowSurrogatesByTheirLimits) {
    struct Row {
        std::uint32_t unit;
        bool isHigh;
        bool isLow;
    };
    for (const auto& [unit, isHigh, isLow] :
         {Row{0xD7FF, false, false}, Row{0xD800, true, false}, Row{0xDBFF, true, false},
          Row{0xDC00, false, true}, Row{0xDFFF, false, true}, Row{0xE000, false, false}}) {
        EXPECT_EQ(UTF16::isHighSurrogate(unit), isHigh) << std::hex << unit;
        EXPECT_EQ(UTF16::isLowSurrogate(unit), isLow) << std::hex << unit;
    }
}

TEST(UTF16, aPairLeadsBackToItsCodePoint) {
    for (const auto& [codePoint, pair] : {
             std::pair{0x10000U, UTF16::SurrogatePair{0xD800, 0xDC00}},
             std::pair{0x1F600U, UTF16::SurrogatePair{0xD83D, 0xDE00}},
             std::pair{0x10FFFFU, UTF16::SurrogatePair{0xDBFF, 0xDFFF}},
         }) {
        EXPECT_EQ(UTF16::surrogatePair(codePoint), pair) << std::hex << codePoint;
        EXPECT_EQ(UTF16::codePoint(pair), codePoint) << std::hex << codePoint;
    }
}

}  // namespace
}  // namespace tallowbrook
