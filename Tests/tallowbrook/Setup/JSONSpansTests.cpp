#include "Setup/JSONSpans.h"

#include <gtest/gtest.h>

#include <string>

namespace tallowbrook::host {
namespace {

std::string_view textOf(std::string_view text, const JSONSpan& span) {
    return text.substr(span.begin, span.end - span.begin);
}

TEST(JSONSpans, nameTheBytesOfEveryValueAndKey) {
    const std::string_view text = " {\"a\\\"}\" : [1.50,\ttrue ], \"b\":{}, \"c\": \"]\\\\\"}\r\n";
    const auto root = spansOf(text);
    EXPECT_EQ(textOf(text, root), text.substr(1, text.size() - 3));
    ASSERT_EQ(root.items.size(), 3U);
    const auto& first = root.items[0];
    EXPECT_EQ(text.substr(first.begin, first.keyEnd - first.begin), "\"a\\\"}\"");
    EXPECT_EQ(textOf(text, first.value), "[1.50,\ttrue ]");
    ASSERT_EQ(first.value.items.size(), 2U);
    EXPECT_EQ(textOf(text, first.value.items[0].value), "1.50");
    EXPECT_EQ(first.value.items[0].begin, first.value.items[0].keyEnd);
    EXPECT_EQ(textOf(text, first.value.items[1].value), "true");
    EXPECT_EQ(textOf(text, root.items[1].value), "{}");
    EXPECT_EQ(textOf(text, root.items[2].value), "\"]\\\\\"");
}

TEST(JSONSpans, ofAWordAloneAreTheWord) {
    const auto root = spansOf("\nnull");
    EXPECT_EQ(root.begin, 1U);
    EXPECT_EQ(root.end, 5U);
    EXPECT_TRUE(root.items.empty());
}

TEST(JSONSpans, knowTheIndentationOfALine) {
    const std::string_view text = "{\n \t\"a\": 1\n}";
    EXPECT_EQ(indentationAt(text, text.find('1')), " \t");
    EXPECT_EQ(indentationAt(text, text.find('a') - 1), " \t");
    EXPECT_EQ(indentationAt(text, 0), "");
    EXPECT_EQ(indentationAt(text, text.size() - 1), "");
}

}  // namespace
}  // namespace tallowbrook::host
