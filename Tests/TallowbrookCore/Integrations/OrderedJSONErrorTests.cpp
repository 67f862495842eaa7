// What the parser refuses, and where it says the trouble is.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "Integrations/OrderedJSON.h"
#include "Support/RepeatedText.h"

namespace tallowbrook {
namespace {

using namespace std::string_view_literals;

struct Refused {
    std::string_view text;
    int column;
    std::string_view message;
    int line = 1;
};

void expectAll(const std::vector<Refused>& rows) {
    for (const auto& [text, column, message, line] : rows) {
        const auto node = OrderedJSON::parse(text);
        ASSERT_FALSE(node) << text;
        EXPECT_EQ(node.error().description(),
                  (JSONParseError{line, column, std::string{message}}.description()))
            << text;
    }
}

TEST(JSONParseError, isDescribedWithItsPlace) {
    EXPECT_EQ((JSONParseError{3, 7, "Unexpected character"}.description()),
              "line 3, column 7: Unexpected character");
}

TEST(OrderedJSONRefuses, aByteOrderMark) {
    expectAll({
        {"\xEF\xBB\xBF{}", 1, "Byte-order mark is not valid JSON"},
        {"\xEF\xBB", 1, "Unexpected character"},
        {" \xEF\xBB\xBF{}", 2, "Unexpected character"},
    });
}

TEST(OrderedJSONRefuses, nothingAtAll) {
    expectAll({
        {"", 1, "Unexpected end of input"},
        {"\r\n\t ", 3, "Unexpected end of input", 2},
    });
}

TEST(OrderedJSONRefuses, moreThanOneValue) {
    constexpr auto message = "Unexpected content after the top-level value";
    expectAll({
        {"[1] x", 5, message},
        {"truex", 5, message},
        {"01", 2, message},
        {"0x10", 2, message},
        {"\"a\" // comment", 5, message},
        {"1\0"sv, 2, message},
    });
}

TEST(OrderedJSONRefuses, whatBeginsNoValue) {
    expectAll({
        {"x", 1, "Unexpected character"},
        {".5", 1, "Unexpected character"},
        {"True", 1, "Unexpected character"},
        {"\f1", 1, "Unexpected character"},
        {"\xC2\xA0 1", 1, "Unexpected character"},
        {"\0"sv, 1, "Unexpected character"},
        {"]", 1, "Unexpected character"},
        {"[,1]", 2, "Unexpected character"},
    });
}

TEST(OrderedJSONRefuses, halfALiteral) {
    expectAll({
        {"tru", 1, "Invalid literal"},
        {"[nul]", 2, "Invalid literal"},
        {"falsy", 1, "Invalid literal"},
    });
}

TEST(OrderedJSONRefuses, numbersOutsideOfTheGrammar) {
    expectAll({
        {"-", 2, "Invalid number"},
        {"--1", 2, "Invalid number"},
        {"1.", 3, "Invalid number"},
        {"1e", 3, "Invalid number"},
        {"1e+", 4, "Invalid number"},
        {"1E-x", 4, "Invalid number"},
        {"[1, -]", 6, "Invalid number"},
        {"[01]", 3, "Expected ',' or ']'"},
    });
}

TEST(OrderedJSONRefuses, brokenArrays) {
    expectAll({
        {"[", 2, "Unexpected end of input"},
        {"[1,", 4, "Unexpected end of input"},
        {"[1", 3, "Expected ',' or ']'"},
        {"[1 2]", 4, "Expected ',' or ']'"},
        {"[truex]", 6, "Expected ',' or ']'"},
        {"[1,]", 4, "Unexpected character"},
    });
}

TEST(OrderedJSONRefuses, brokenObjects) {
    expectAll({
        {"{", 2, "Expected a string key"},
        {"{a:1}", 2, "Expected a string key"},
        {"{,}", 2, "Expected a string key"},
        {R"({"a":1,})", 8, "Expected a string key"},
        {R"({"a":1,)", 8, "Expected a string key"},
        {R"({"a")", 5, "Expected ':'"},
        {R"({"a" 1})", 6, "Expected ':'"},
        {R"({"a":)", 6, "Unexpected end of input"},
        {R"({"a":})", 6, "Unexpected character"},
        {R"({"a":1)", 7, "Expected ',' or '}'"},
        {R"({"a":1 "b":2})", 8, "Expected ',' or '}'"},
        {R"({"a":01})", 7, "Expected ',' or '}'"},
    });
}

TEST(OrderedJSONRefuses, aKeyTwiceInOneObject) {
    expectAll({
        {R"({"a":1,"a":2})", 11, R"(Duplicate key "a")"},
        {R"({"A":1,"\u0041":2})", 16, R"(Duplicate key "A")"},
        {R"([{"x":{"k":1,"k":2}}])", 17, R"(Duplicate key "k")"},
        {R"({"":1,"":2})", 9, R"(Duplicate key "")"},
        {R"({"é\n":1,"é\n" :2})", 17, "Duplicate key \"é\n\""},
        {R"({"a":1,"a")", 11, R"(Duplicate key "a")"},
    });
    EXPECT_TRUE(OrderedJSON::parse(R"({"a":{"a":1},"A":[{"a":2},{"a":3}]})"));
}

TEST(OrderedJSONRefuses, stringsWithoutAnEnd) {
    expectAll({
        {"\"", 2, "Unterminated string"},
        {R"("abc)", 5, "Unterminated string"},
        {R"("a\n)", 5, "Unterminated string"},
        {R"("a\")", 5, "Unterminated string"},
        {R"({"a)", 4, "Unterminated string"},
        {R"("\ud83d)", 8, "Unterminated string"},
        {R"("a\)", 4, "Unterminated escape"},
        {R"("\ud83d\)", 9, "Unterminated escape"},
    });
}

TEST(OrderedJSONRefuses, controlCharactersInStrings) {
    constexpr auto message = "Unescaped control character in string";
    expectAll({
        {"\"a\tb\"", 3, message},
        {"\"a\nb\"", 3, message},
        {"\"\0\""sv, 2, message},
        {"\"\x1F\"", 2, message},
        {"{\"a\t\":1}", 4, message},
        {"\"\\n\x01\"", 4, message},
        {"\"\\ud83d\t\"", 8, message},
    });
}

TEST(OrderedJSONRefuses, escapesThatThereAreNot) {
    expectAll({
        {R"("\x41")", 3, "Invalid escape"},
        {R"("ab\'")", 5, "Invalid escape"},
        {R"("\U0041")", 3, "Invalid escape"},
        {"\"\\\n\"", 3, "Invalid escape"},
        {"\"\\\0\""sv, 3, "Invalid escape"},
        {R"("\ud83d\x")", 9, "Invalid escape"},
        {R"("\u)", 4, R"(Truncated \u escape)"},
        {R"("\u12")", 4, R"(Truncated \u escape)"},
        {R"("\ud83d\u12")", 10, R"(Truncated \u escape)"},
        {R"("\u12" )", 6, R"(Invalid \u escape)"},
        {R"("\u00g0")", 6, R"(Invalid \u escape)"},
        {R"("\u 041")", 4, R"(Invalid \u escape)"},
        {R"("\u+041")", 4, R"(Invalid \u escape)"},
        {R"("\u004G")", 7, R"(Invalid \u escape)"},
        {R"("\u@@@@")", 4, R"(Invalid \u escape)"},
    });
}

TEST(OrderedJSONRefuses, halfASurrogatePair) {
    expectAll({
        {R"("\ud83d")", 8, "Unpaired surrogate"},
        {R"("\ud83dx")", 8, "Unpaired surrogate"},
        {R"("\ud83dé")", 8, "Unpaired surrogate"},
        {R"("\ud83d\n")", 8, "Unpaired surrogate"},
        {R"("\ud83d\u0041")", 8, "Unpaired surrogate"},
        {R"("\ud83d\ud83d")", 8, "Unpaired surrogate"},
        {R"("\ude00")", 2, "Unpaired surrogate"},
        {R"("\ud83d\ude00\ude00")", 14, "Unpaired surrogate"},
        {R"({"\udfff":1})", 3, "Unpaired surrogate"},
    });
}

TEST(OrderedJSONRefuses, whatIsNestedTooDeep) {
    expectAll({
        {repeated("[", 257), 257, "Nesting too deep"},
        {repeated("[", 256), 257, "Nesting too deep"},
        {repeated("[", 256) + "1" + repeated("]", 256), 257, "Nesting too deep"},
        {repeated(R"({"a":)", 256) + "1", 1281, "Nesting too deep"},
        {repeated("[", 100'000), 257, "Nesting too deep"},
    });
    EXPECT_TRUE(OrderedJSON::parse(repeated("[", 255) + "1" + repeated("]", 255)));
}

TEST(OrderedJSONError, isPlacedByLineFeedsAndBytes) {
    expectAll({
        {"{\n  \"a\": x\n}", 8, "Unexpected character", 2},
        {"[\"é\", x]", 8, "Unexpected character"},
        {"[\n\n\"😀\" x", 8, "Expected ',' or ']'", 3},
        {"{\r\n  x", 3, "Expected a string key", 2},
        {"[1,\n", 1, "Unexpected end of input", 2},
    });
}

}  // namespace
}  // namespace tallowbrook
