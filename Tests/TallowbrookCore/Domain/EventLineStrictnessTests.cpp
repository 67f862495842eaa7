#include <gtest/gtest.h>

#include <string>

#include "Domain/EventCoding.h"
#include "EventLineText.h"

namespace tallowbrook {
namespace {

const EventLineText line;

bool decodes(const EventLineText& text) { return EventCoding::decodeLine(text.text()).has_value(); }

bool decodes(std::string_view text) { return EventCoding::decodeLine(text).has_value(); }

TEST(EventLineStrictness, aKeyMustNotComeTwice) {
    struct Row {
        const char* why;
        EventLineText line;
    };
    for (const auto& [why, text] : {
             Row{"required, equal values", line.adding("schema", "1")},
             Row{"detail", line.adding("detail", "{}")},
             Row{"optional", line.adding("cwd", R"("/a")").adding("cwd", R"("/b")")},
             Row{"first null", line.adding("cwd", "null").adding("cwd", R"("/b")")},
             Row{"second null", line.adding("cwd", R"("/a")").adding("cwd", "null")},
             Row{"escaped", line.adding("cwd", R"("/a")").adding(R"(\u0063wd)", R"("/b")")},
             Row{"in the detail", line.with("detail", R"({"toolName":"a","toolName":"a"})")},
             Row{"unknown", line.adding("later", "1").adding("later", "2")},
             Row{"unknown in the detail", line.with("detail", R"({"x":1,"x":1})")},
             Row{"deep inside", line.adding("later", R"([0,{"a":[{"x":1,"y":2,"x":3}]}])")},
             Row{"deep inside the detail", line.with("detail", R"({"a":{"b":{"x":1,"x":1}}})")},
             Row{"named like a field, deep inside", line.adding("later", R"({"id":1,"id":2})")},
         })
        EXPECT_FALSE(decodes(text)) << why;
}

TEST(EventLineStrictness, aKeyMayComeInSeveralObjects) {
    for (const auto& text : {line.adding("x", R"({"x":[{"x":1},{"x":2}]})"),
                             line.adding("x", "1").with("detail", R"({"x":1})"),
                             line.adding("toolName", "1").with("detail", R"({"toolName":"a"})")})
        EXPECT_TRUE(decodes(text)) << text.text();
}

TEST(EventLineStrictness, longKeysAreComparedToTheirEnd) {
    for (const std::size_t length : {1000U, 100'000U}) {
        const std::string key(length, 'k');
        EXPECT_FALSE(decodes(line.adding(key + "a", "1").adding(key + "a", "1"))) << length;
        EXPECT_TRUE(decodes(line.adding(key + "a", "1").adding(key + "b", "1"))) << length;
    }
}

TEST(EventLineStrictness, loneSurrogatesFailTheLineWhereverTheyStand) {
    for (const char* escape :
         {R"(\ud83d)", R"(\uD83D)", R"(\ude00)", R"(\ude00\ud83d)", R"(\ud83d\n)"}) {
        const std::string text = '"' + std::string{escape} + '"';
        EXPECT_FALSE(decodes(line.with("eventType", text))) << "required " << escape;
        EXPECT_FALSE(decodes(line.with("cwd", text))) << "optional " << escape;
        EXPECT_FALSE(decodes(line.with("later", text))) << "unknown " << escape;
        EXPECT_FALSE(decodes(line.with("later", "[{\"a\":" + text + "}]"))) << "deep " << escape;
        EXPECT_FALSE(decodes(line.adding(escape, "1"))) << "key " << escape;
        EXPECT_FALSE(decodes(line.with("detail", "{\"toolName\":" + text + "}"))) << escape;
    }
    EXPECT_TRUE(decodes(line.with("later", R"("\ud83d\ude00 \\ud83d")")));
}

TEST(EventLineStrictness, invalidUTF8FailsTheLineWhereverItStands) {
    for (const char* bytes : {"\x80", "\xF0\x9F\x98", "\xC0\xAF", "\xED\xA0\xBD", "caf\xE9"}) {
        const std::string text = '"' + std::string{bytes} + '"';
        EXPECT_FALSE(decodes(line.with("eventType", text))) << bytes;
        EXPECT_FALSE(decodes(line.with("tty", text))) << bytes;
        EXPECT_FALSE(decodes(line.with("later", text))) << bytes;
        EXPECT_FALSE(decodes(line.with("later", "[{\"a\":" + text + "}]"))) << bytes;
        EXPECT_FALSE(decodes(line.adding(bytes, "1"))) << bytes;
    }
}

bool decodesUnknownNumber(const std::string& number) {
    const bool alone = decodes(line.with("later", number));
    EXPECT_EQ(decodes(line.with("later", R"(["1e999\"",)" + number + "]")), alone) << number;
    EXPECT_EQ(decodes(line.with("detail", R"({"x":)" + number + "}")), alone) << number;
    EXPECT_FALSE(decodes(line.with("schema", number))) << number;
    return alone;
}

const std::string manyZeros(400, '0');

TEST(EventLineStrictness, numbersBeyondDoublesFailTheLine) {
    for (const std::string& number :
         {std::string{"1e999"}, std::string{"-1e999"}, std::string{"1E+400"}, std::string{"1e309"},
          std::string{"-2e308"}, std::string{"1.7976931348623159e308"},
          std::string{"0.00179769313486231581e311"}, std::string{"1e99999999999"},
          std::string{"10.5e2147483648"}, "1" + manyZeros, "1" + manyZeros + ".5",
          "0." + manyZeros + "1e800", "1e" + std::string(40, '9')})
        EXPECT_FALSE(decodesUnknownNumber(number)) << number;
}

TEST(EventLineStrictness, numbersTooSmallForDoublesAndZerosOfAnyExponentDoNotFailTheLine) {
    for (const std::string& number :
         {std::string{"0e309"}, std::string{"-0E+309"}, std::string{"0.000e99999999999"},
          std::string{"0e-2147483649"}, std::string{"1e-400"}, std::string{"1e-2147483648"},
          std::string{"-12.5e-99999999999"}, std::string{"1e308"}, std::string{"-1.5e-300"},
          std::string{"1.7976931348623157e308"}, std::string{"1e0000000000000000000308"},
          "0." + manyZeros + "1e700", "1" + manyZeros + "e-401", "1e-" + std::string(40, '9'),
          "0e" + std::string(40, '9')})
        EXPECT_TRUE(decodesUnknownNumber(number)) << number;
}

TEST(EventLineStrictness, whatIsNoNumberFailsTheLineWhateverItsExponent) {
    for (const char* token : {"00e309", "-e309", "0.e309", ".0e309", "0e+-309", "0e", "0ee309",
                              "0e309x", "0e309 1", "+0e309", "0e309e1", "0e309-", "--0e309"}) {
        EXPECT_FALSE(decodes(line.with("later", token))) << token;
        EXPECT_FALSE(decodes(line.with("later", token).adding("more", "0e99999999999"))) << token;
    }
    EXPECT_FALSE(decodes(line.with("later", "0e99999999999").with("more", R"("\ud83d")")));
    EXPECT_FALSE(decodes(line.with("later", "0e99999999999").with("more", "1e99999999999")));
}

std::string nested(std::size_t levels, char open, char close) {
    return std::string(levels, open) + std::string(levels, close);
}

TEST(EventLineStrictness, atMostThirtyTwoLevelsAreRead) {
    // The event itself is the first level.
    EXPECT_TRUE(decodes(line.with("later", nested(31, '[', ']'))));
    EXPECT_FALSE(decodes(line.with("later", nested(32, '[', ']'))));
    EXPECT_TRUE(decodes(line.with("detail", "{\"x\":" + nested(30, '[', ']') + "}")));
    EXPECT_FALSE(decodes(line.with("detail", "{\"x\":" + nested(31, '[', ']') + "}")));
    EXPECT_FALSE(decodes(std::string(100'000, '[')));

    std::string objects = "1";
    for (int level = 0; level < 31; ++level) objects = "{\"a\":" + objects + "}";
    EXPECT_TRUE(decodes(line.with("later", objects)));
    EXPECT_FALSE(decodes(line.with("later", "{\"a\":" + objects + "}")));
}

TEST(EventLineStrictness, onlyOneWholeObjectIsALine) {
    const std::string valid = line.text();
    struct Row {
        const char* why;
        std::string text;
    };
    for (const auto& [why, text] : {
             Row{"nothing", ""},
             Row{"string", R"("text")"},
             Row{"array", "[" + valid + "]"},
             Row{"byte-order mark", "\xEF\xBB\xBF" + valid},
             Row{"another object behind it", valid + valid},
             Row{"text before it", "x" + valid},
             Row{"zero byte behind it", valid + '\0'},
             Row{"comment", valid.substr(0, valid.size() - 1) + "/**/}"},
         })
        EXPECT_FALSE(decodes(text)) << why;
}

TEST(EventLineStrictness, aCutLineFails) {
    const std::string valid = line.with("cwd", "\"/\u65E5\U0001F600\\n\"").text();
    for (std::size_t length = 0; length < valid.size(); ++length)
        EXPECT_FALSE(decodes(valid.substr(0, length))) << valid.substr(0, length);
    EXPECT_TRUE(decodes(valid));
}

TEST(EventLineStrictness, controlCharactersMustBeEscaped) {
    for (int byte = 0; byte < 0x20; ++byte)
        EXPECT_FALSE(decodes(line.with("cwd", '"' + std::string(1, static_cast<char>(byte)) + '"')))
            << byte;
    EXPECT_TRUE(decodes(line.with("cwd", "\"\x7F\"")));
}

}  // namespace
}  // namespace tallowbrook
