#include "Output/PrintableText.h"

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>

namespace tallowbrook::host {
namespace {

TEST(PrintableText, keepsWhatIsPrintable) {
    for (const std::string text :
         {"", "plain text 0-9 ~", "na\u00EFve \u2014 \u201Cquoted\u201D", "\u65E5\u672C\u8A9E",
          "e\u0301", "\U0001F469\u200D\U0001F4BB", "\u0646\u0645\u200C\u06CC", "\u2764\uFE0F",
          "\u00A0", "\uFFFD", "\uE000", "\u0378"})
        EXPECT_EQ(PrintableText::printable(text), text);
}

TEST(PrintableText, replacesWhatATerminalWouldObey) {
    for (unsigned byte = 0; byte < 0x20; ++byte)
        EXPECT_EQ(PrintableText::printable("a" + std::string(1, static_cast<char>(byte)) + "b"),
                  "a\uFFFDb")
            << byte;
    struct Row {
        const char* why;
        std::string text;
    };
    for (const auto& [why, text] : {
             Row{"delete", "\x7F"},
             Row{"first of the second control range", "\xC2\x80"},
             Row{"control sequence introducer", "\xC2\x9B"},
             Row{"last of the second control range", "\xC2\x9F"},
             Row{"soft hyphen", "\u00AD"},
             Row{"zero width space", "\u200B"},
             Row{"left-to-right mark", "\u200E"},
             Row{"right-to-left mark", "\u200F"},
             Row{"Arabic letter mark", "\u061C"},
             Row{"line separator", "\u2028"},
             Row{"paragraph separator", "\u2029"},
             Row{"right-to-left embedding", "\u202B"},
             Row{"pop directional formatting", "\u202C"},
             Row{"right-to-left override", "\u202E"},
             Row{"left-to-right isolate", "\u2066"},
             Row{"pop directional isolate", "\u2069"},
             Row{"byte-order mark", "\uFEFF"},
             Row{"invisible tag", "\U000E0041"},
         })
        EXPECT_EQ(PrintableText::printable("a" + text + "b"), "a\uFFFDb") << why;
}

TEST(PrintableText, replacesEachByteThatIsNoUTF8) {
    struct Row {
        const char* why;
        std::string text;
        std::string expected;
    };
    for (const auto& [why, text, expected] : {
             Row{"never a byte of UTF-8", "\xFF", "\uFFFD"},
             Row{"a lone continuation", "\x9B", "\uFFFD"},
             Row{"cut short", "\xE6\x97", "\uFFFD\uFFFD"},
             Row{"cut short before a letter", "\xC3z", "\uFFFDz"},
             Row{"longer than need be", "\xC0\x9B", "\uFFFD\uFFFD"},
             Row{"a surrogate", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
             Row{"beyond Unicode", "\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
         })
        EXPECT_EQ(PrintableText::printable(text), expected) << why;
}

TEST(PrintableText, escapesInJSONWhatATerminalWouldObey) {
    struct Row {
        const char* why;
        std::string json;
        std::string expected;
    };
    for (const auto& [why, json, expected] : {
             Row{"nothing to escape", "{\"a\": [1, \"\u65E5 \U0001F600\"]}\n",
                 "{\"a\": [1, \"\u65E5 \U0001F600\"]}\n"},
             Row{"its own layout", "[\n\t1,\r\n 2]", "[\n\t1,\r\n 2]"},
             Row{"an escape that is there", R"("\u001b\n")", R"("\u001b\n")"},
             Row{"delete", "\"\x7F\"", R"("\u007f")"},
             Row{"control sequence introducer", "\"\xC2\x9B\"", R"("\u009b")"},
             Row{"right-to-left override", "\"\u202E\"", R"("\u202e")"},
             Row{"beyond the first plane", "\"\U000E0041\"", R"("\udb40\udc41")"},
         }) {
        EXPECT_EQ(PrintableText::printableJSON(json), expected) << why;
        EXPECT_EQ(boost::json::parse(PrintableText::printableJSON(json)), boost::json::parse(json))
            << why;
    }
}

TEST(PrintableText, isPaddedToItsColumns) {
    struct Row {
        const char* why;
        std::string text;
        std::size_t columns;
        std::string expected;
    };
    for (const auto& [why, text, columns, expected] : {
             Row{"empty", "", 3, "   "},
             Row{"shorter", "ab", 3, "ab "},
             Row{"just as wide", "abc", 3, "abc"},
             Row{"one too wide", "abcd", 3, "ab\u2026"},
             Row{"much too wide", "abcdefgh", 3, "ab\u2026"},
             Row{"a single column", "ab", 1, "\u2026"},
             Row{"two columns a character", "\u65E5\u672C", 5, "\u65E5\u672C "},
             Row{"just as wide", "\u65E5\u672C", 4, "\u65E5\u672C"},
             Row{"one too wide", "\u65E5\u672C", 3, "\u65E5\u2026"},
             Row{"half of it would fit", "\u65E5\u672C", 2, " \u2026"},
             Row{"none of it would fit", "\u65E5", 1, "\u2026"},
             Row{"an accent of its own", "e\u0301x", 3, "e\u0301x "},
             Row{"just as wide", "xe\u0301", 2, "xe\u0301"},
             Row{"an accent stays with its letter", "ae\u0301xx", 3, "ae\u0301\u2026"},
             Row{"it goes with its letter", "abe\u0301x", 3, "ab\u2026"},
             Row{"an emoji", "\U0001F600", 3, "\U0001F600 "},
         })
        EXPECT_EQ(PrintableText::padded(text, columns), expected) << why;
}

TEST(PrintableText, isWrappedAtBlanksByTheColumnsItTakes) {
    EXPECT_EQ(PrintableText::wrapped("", 10), "");
    EXPECT_EQ(PrintableText::wrapped("one two three", 13), "one two three");
    EXPECT_EQ(PrintableText::wrapped("one two three", 12), "one two\nthree");
    EXPECT_EQ(PrintableText::wrapped("a muchtoolong b", 4), "a\nmuch\ntool\nong\nb");
    EXPECT_EQ(PrintableText::wrapped("日本 日本 日本", 9), "日本 日本\n日本");
}

TEST(PrintableText, shortensToWhatFitsAndPadsNothing) {
    EXPECT_EQ(PrintableText::shortened("project", 7), "project");
    EXPECT_EQ(PrintableText::shortened("project", 6), "proje…");
    EXPECT_EQ(PrintableText::shortened("日本語", 5), "日本…");
    EXPECT_EQ(PrintableText::shortened("日本語", 4), "日…");
    EXPECT_EQ(PrintableText::shortened("project", 0), "");
}

TEST(PrintableText, breaksLinesAtBlanks) {
    using Lines = std::vector<std::string>;
    EXPECT_EQ(PrintableText::wrappedLines("", 10), Lines{""});
    EXPECT_EQ(PrintableText::wrappedLines("one two", 10), Lines{"one two"});
    EXPECT_EQ(PrintableText::wrappedLines("one two three", 7), (Lines{"one two", "three"}));
    EXPECT_EQ(PrintableText::wrappedLines("one two three", 8, 2), (Lines{"one two", "  three"}));
    EXPECT_EQ(PrintableText::wrappedLines("one   two", 4), (Lines{"one ", "two"}));
}

TEST(PrintableText, cutsWordsThatAreLongerThanALine) {
    using Lines = std::vector<std::string>;
    EXPECT_EQ(PrintableText::wrappedLines("abcdefgh", 3), (Lines{"abc", "def", "gh"}));
    EXPECT_EQ(PrintableText::wrappedLines("日本語", 3), (Lines{"日", "本", "語"}));
    EXPECT_EQ(PrintableText::wrappedLines("日本", 1), (Lines{"日", "本"}));
    EXPECT_EQ(PrintableText::wrappedLines("abc", 0), (Lines{"a", "b", "c"}));
    EXPECT_EQ(PrintableText::wrappedLines("abcdef", 3, 2), (Lines{"abc", "def"}));
}

}  // namespace
}  // namespace tallowbrook::host
