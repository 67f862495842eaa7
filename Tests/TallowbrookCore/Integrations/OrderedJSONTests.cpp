#include "Integrations/OrderedJSON.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tallowbrook {
namespace {

using namespace std::string_view_literals;

// A node of a text that must be valid.
JSONNode parsed(std::string_view text) {
    auto node = OrderedJSON::parse(text);
    if (!node) ADD_FAILURE() << text << ": " << node.error().description();
    return node.value_or(JSONNode::null());
}

std::string rewritten(std::string_view text) { return OrderedJSON::serialize(parsed(text), "  "); }

JSONNode stringAsWritten(std::string value, std::string rawText) {
    return {JSONNode::String{std::move(value), std::move(rawText)}};
}

std::string nested(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

TEST(JSONNode, givesItsPayloadOnlyAsWhatItIs) {
    const std::vector<JSONNode> nodes{JSONNode::object({}),   JSONNode::array({}),
                                      JSONNode::string("s"),  JSONNode::number("1.50"),
                                      JSONNode::bool_(false), JSONNode::null()};
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        EXPECT_EQ(nodes[i].value.index(), i) << "the kinds have an order";
        EXPECT_EQ(nodes[i].objectMembers() != nullptr, i == 0);
        EXPECT_EQ(nodes[i].arrayElements() != nullptr, i == 1);
        EXPECT_EQ(nodes[i].stringValue() != nullptr, i == 2);
    }
    EXPECT_EQ(*nodes[2].stringValue(), "s");
}

TEST(JSONNode, isEqualOnlyWithTheSameRawTexts) {
    EXPECT_EQ(parsed(R"("A")"), parsed(R"("A")"));
    EXPECT_NE(parsed(R"("A")"), parsed(R"("\u0041")"));
    EXPECT_NE(parsed(R"("A")"), JSONNode::string("A")) << "a program's has no raw text";
    EXPECT_NE(parsed(R"({"A":1})"), parsed(R"({"\u0041":1})"));
    EXPECT_NE(parsed("1.0"), parsed("1.00"));
    EXPECT_NE(parsed(R"({"a":1,"b":2})"), parsed(R"({"b":2,"a":1})"));
}

TEST(JSONNode, givesTheFirstMemberOfAKey) {
    std::vector<JSONMember> members{{"a", std::nullopt, JSONNode::number("1")},
                                    {"b", std::nullopt, JSONNode::number("2")},
                                    {"a", std::nullopt, JSONNode::number("3")}};
    EXPECT_EQ(value(members, "a"), &members[0].value);
    EXPECT_EQ(value(members, "b"), &members[1].value);
    EXPECT_EQ(value(members, "A"), nullptr);
    EXPECT_EQ(value(std::vector<JSONMember>{}, ""), nullptr);
}

TEST(JSONNode, findsAKeyByItsCodePointsHoweverItWasWritten) {
    const auto node = parsed(R"({"\u0041": 1, "é": 2})");
    const auto& members = *node.objectMembers();
    EXPECT_EQ(value(members, "A"), &members[0].value);
    EXPECT_EQ(value(members, "é"), &members[1].value);
    EXPECT_EQ(value(members, "e\u0301"), nullptr) << "the same to the eye, but other code points";
}

TEST(OrderedJSON, readsEachKindOfValue) {
    EXPECT_EQ(parsed("null"), JSONNode::null());
    EXPECT_EQ(parsed("true"), JSONNode::bool_(true));
    EXPECT_EQ(parsed("false"), JSONNode::bool_(false));
    EXPECT_EQ(parsed("12"), JSONNode::number("12"));
    EXPECT_EQ(parsed(R"("")"), stringAsWritten("", ""));
    EXPECT_EQ(parsed("[ ]"), JSONNode::array({}));
    EXPECT_EQ(parsed("{ }"), JSONNode::object({}));
    EXPECT_EQ(parsed(R"([1,[true],{}])"),
              JSONNode::array({JSONNode::number("1"), JSONNode::array({JSONNode::bool_(true)}),
                               JSONNode::object({})}));
    EXPECT_EQ(parsed(R"({"k":"v"})"), JSONNode::object({{"k", "k", stringAsWritten("v", "v")}}));
}

TEST(OrderedJSON, takesFourBytesForWhiteSpaceWhereverItMayBe) {
    EXPECT_EQ(
        parsed(" \t\r\n{ \t\r\n\"a\" \t\r\n: \t\r\n[ \t\r\n1 \t\r\n, 2 ] , \"b\" : 3 } \t\r\n"),
        parsed(R"({"a":[1,2],"b":3})"));
}

TEST(OrderedJSON, keepsNumbersAsTheyWereWritten) {
    for (const char* number :
         {"0", "-0", "7", "-12", "1.0", "1.50", "-0.0", "1e5", "1E+05", "1E+3", "0e0", "2e-7",
          "1e99999", "123456789012345678901234567890", "0.1000000000000000055511151231257827"}) {
        EXPECT_EQ(parsed(number), JSONNode::number(number));
        EXPECT_EQ(rewritten(number), number);
    }
}

TEST(OrderedJSON, decodesStringsAndKeepsHowTheyWereWritten) {
    struct Row {
        std::string_view raw;
        std::string_view value;
    };
    for (const auto& [raw, value] : {
             Row{R"(plain)", "plain"},
             Row{R"(\"\\\/\b\f\n\r\t)", "\"\\/\b\f\n\r\t"},
             Row{R"(a\nb)", "a\nb"},
             Row{R"(\u0041\u005a)", "AZ"},
             Row{R"(\u0000)", "\0"sv},
             Row{R"(\u007F\u0080\u07ff\u0800\uFFFF)", "\x7F\u0080\u07FF\u0800\uFFFF"},
             Row{R"(\ud7ff\ue000)", "\uD7FF\uE000"},
             Row{R"(\ud83d\ude00)", "\U0001F600"},
             Row{R"(\uD800\uDC00\uDBFF\uDFFF)", "\U00010000\U0010FFFF"},
             Row{R"(/ é € 😀)", "/ é € 😀"},
             Row{"\x7F", "\x7F"},
             Row{R"(é\té)", "é\té"},
         }) {
        const std::string quoted = "\"" + std::string{raw} + "\"";
        EXPECT_EQ(parsed(quoted), stringAsWritten(std::string{value}, std::string{raw}));
        EXPECT_EQ(rewritten(quoted), quoted);
        const auto object = parsed("{" + quoted + ":1}");
        EXPECT_EQ(object, JSONNode::object(
                              {{std::string{value}, std::string{raw}, JSONNode::number("1")}}));
        EXPECT_EQ(OrderedJSON::serialize(object, ""), "{\n" + quoted + ": 1\n}");
    }
}

TEST(OrderedJSON, replacesBytesThatAreNoUTF8InBothTexts) {
    EXPECT_EQ(parsed("\"a\xFFz\""), stringAsWritten("a�z", "a�z"));
    EXPECT_EQ(parsed("\"\\n\xC3\\n\""), stringAsWritten("\n�\n", "\\n�\\n"));
    EXPECT_EQ(parsed("{\"\xE2\x82\":\"é\"}"),
              JSONNode::object({{"�", "�", stringAsWritten("é", "é")}}));
}

TEST(OrderedJSON, nests256Deep) {
    EXPECT_EQ(OrderedJSON::serialize(parsed(nested(256)), "").size(), 256 * 4 - 2U);
    EXPECT_EQ(OrderedJSON::parse(nested(257)).error(),
              (JSONParseError{1, 257, "Nesting too deep"}));
}

TEST(OrderedJSON, knowsKeysApartInObjectsOfAnySize) {
    for (const int count : {1, 15, 16, 17, 18, 5000}) {
        std::string text = "{";
        for (int i = 0; i < count; ++i)
            text += (i > 0 ? ",\"key " : "\"key ") + std::to_string(i) + "\":0";
        const auto node = parsed(text + "}");
        EXPECT_EQ(node.objectMembers()->size(), static_cast<std::size_t>(count));
        for (const int again : {0, count / 2, count - 1}) {
            const auto key = "key " + std::to_string(again);
            const auto failure = OrderedJSON::parse(text + ",\"" + key + "\":0}");
            ASSERT_FALSE(failure) << count;
            EXPECT_EQ(failure.error().message, "Duplicate key \"" + key + "\"");
        }
    }
}

TEST(OrderedJSON, isWrittenWithOneItemALine) {
    EXPECT_EQ(rewritten(R"({"a":[1,{"b":null},[]],"c":{},"d":[true,false],"e":"f"})"),
              R"({
  "a": [
    1,
    {
      "b": null
    },
    []
  ],
  "c": {},
  "d": [
    true,
    false
  ],
  "e": "f"
})");
}

TEST(OrderedJSON, isWrittenWithAnyIndent) {
    EXPECT_EQ(OrderedJSON::serialize(parsed("[[1]]"), ""), "[\n[\n1\n]\n]");
    EXPECT_EQ(OrderedJSON::serialize(parsed("[[1]]"), "\t"), "[\n\t[\n\t\t1\n\t]\n]");
}

TEST(OrderedJSON, writesLineFeedsOnly) {
    EXPECT_EQ(rewritten("{\r\n  \"a\": [\r\n 1 ]\r\n}\r\n"), "{\n  \"a\": [\n    1\n  ]\n}");
}

TEST(OrderedJSON, escapesStringsThatHaveNoRawText) {
    EXPECT_EQ(OrderedJSON::serialize(JSONNode::string("a\"b\n"), "  "), R"("a\"b\n")");
    EXPECT_EQ(
        OrderedJSON::serialize(JSONNode::object({{"a\tb", std::nullopt, JSONNode::null()}}), ""),
        "{\n\"a\\tb\": null\n}");
}

TEST(OrderedJSON, escapesOnlyWhatItMust) {
    struct Row {
        std::string_view text;
        std::string_view escaped;
    };
    for (const auto& [text, escaped] : {
             Row{"", ""},
             Row{"\"\\", R"(\"\\)"},
             Row{"\b\t\n\f\r", R"(\b\t\n\f\r)"},
             Row{"\0\x01\x0B\x0E\x1F"sv, R"(\u0000\u0001\u000b\u000e\u001f)"},
             Row{"/ ~\x7F é 😀", "/ ~\x7F é 😀"},
         })
        EXPECT_EQ(OrderedJSON::escape(text), escaped);
}

TEST(OrderedJSON, readsBackEveryByteThatItEscapes) {
    for (int byte = 0; byte < 0x80; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        const auto node = parsed("\"" + OrderedJSON::escape(text) + "\"");
        EXPECT_EQ(*node.stringValue(), text) << byte;
    }
}

}  // namespace
}  // namespace tallowbrook
