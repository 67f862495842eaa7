#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Diagnostics/DiagnosticLog.h"
#include "Support/EnvironmentVariable.h"
#include "Support/RepeatedText.h"

namespace tallowbrook {
namespace {

std::string sanitized(const std::string& text) { return DiagnosticLog::sanitize(text, 400); }

class DiagnosticLogSanitizeTest : public testing::Test {
 protected:
    EnvironmentVariable home{"HOME", "/Users/alice"};
};

TEST_F(DiagnosticLogSanitizeTest, abbreviatesTheHomeDirectoryWhereverItStands) {
    struct Row {
        const char* text;
        const char* sanitized;
    };
    for (const auto& [text, expected] : {
             Row{"", ""},
             Row{"/Users/alice", "~"},
             Row{"in /Users/alice/proj: bad", "in ~/proj: bad"},
             Row{"/Users/alice/a and /Users/alice/b", "~/a and ~/b"},
             Row{"/Users/alice/Users/alice", "~~"},
             Row{"/Volumes/Users/alice", "/Volumes~"},
             Row{"/Users/alice2/proj", "~2/proj"},
             Row{"/Users/Alice/proj", "/Users/Alice/proj"},
             Row{"/Users/alic", "/Users/alic"},
             Row{"/Users/alic\ne", "/Users/alic e"},
         })
        for (const char* name : {"/Users/alice", "/Users/alice/"}) {
            const EnvironmentVariable other{"HOME", name};
            EXPECT_EQ(sanitized(text), expected) << text;
        }
}

TEST_F(DiagnosticLogSanitizeTest, abbreviatesBeforeItBlanksControlCharacters) {
    const EnvironmentVariable tab{"HOME", "/Users/al\tice"};
    EXPECT_EQ(sanitized("/Users/al\tice/proj"), "~/proj");
    const EnvironmentVariable blank{"HOME", "/Users/al ice"};
    EXPECT_EQ(sanitized("/Users/al\tice/proj"), "/Users/al ice/proj");
}

TEST_F(DiagnosticLogSanitizeTest, abbreviatesNothingForAHomeThatIsTheRoot) {
    for (const char* root : {"/", "//"}) {
        const EnvironmentVariable other{"HOME", root};
        EXPECT_EQ(sanitized("/Users/alice //x /"), "/Users/alice //x /");
    }
}

TEST_F(DiagnosticLogSanitizeTest, turnsEachControlCharacterIntoOneBlank) {
    for (int byte = 0; byte < 0x80; ++byte) {
        const std::string character(1, static_cast<char>(byte));
        const bool isControl = byte < 0x20 || byte == 0x7F;
        EXPECT_EQ(sanitized("a" + character + "b"), "a" + (isControl ? " " : character) + "b")
            << byte;
    }
    EXPECT_EQ(sanitized("a\r\n\tb"), "a   b");
    EXPECT_EQ(sanitized("\u0085\u2028\uFEFF"), "\u0085\u2028\uFEFF");
}

TEST_F(DiagnosticLogSanitizeTest, abbreviatesBeforeItCountsCharacters) {
    const std::string rest(399, 'x');
    EXPECT_EQ(sanitized("/Users/alice" + rest), "~" + rest);
    EXPECT_EQ(sanitized("/Users/alice" + rest + "y"), "~" + rest + "\u2026");
}

// Each is one character to its reader.
const std::vector<std::string> characters{
    "x",
    "\u00E9",
    "e\u0301",
    "\U0001F600",
    "\U0001F1E9\U0001F1EA",                        // flag
    "\U0001F468\u200D\U0001F469\u200D\U0001F467",  // family, joined by zero-width joiners
    "\U0001F3F4\U000E0067\U000E0062\U000E0073\U000E0063\U000E0074\U000E007F",  // flag of tags
    "\u0915\u093F",  // letter and vowel sign
    "\xFF",          // no UTF-8: counts for itself
};

TEST_F(DiagnosticLogSanitizeTest, countsCharactersAsTheirReaderSeesThem) {
    for (const auto& character : characters) {
        // Compared by their lengths: the texts would fill the report of a failure.
        const std::string longest = repeated(character, 400);
        EXPECT_EQ(sanitized(longest).size(), longest.size()) << character;
        const std::string cut = longest + "\u2026";
        for (const std::string& more : {character, std::string{"x"}, repeated(character, 1000)}) {
            const std::string text = sanitized(longest + more);
            EXPECT_EQ(text.size(), cut.size()) << character;
            EXPECT_TRUE(text == cut) << character;
        }
        EXPECT_EQ(DiagnosticLog::sanitize(character, 1), character);
        EXPECT_EQ(DiagnosticLog::sanitize(character + character, 1), character + "\u2026");
    }
}

TEST_F(DiagnosticLogSanitizeTest, countsEachByteThatIsNotUTF8) {
    struct Row {
        const char* why;
        std::string text;
        std::size_t characters;
    };
    for (const auto& [why, text, count] : {
             Row{"cut character", "a\xE6\x97", 3},
             Row{"between letters",
                 "a\xFF"
                 "b",
                 3},
             Row{"between the letters of a flag", "\U0001F1E9\xFF\U0001F1EA", 3},
             Row{"between joined pictures", "\U0001F468\u200D\xFF\U0001F469", 3},
             Row{"behind half a flag, before a flag", "\U0001F1E9\xFF\U0001F1E9\U0001F1EA", 3},
             Row{"surrogate", "\xED\xA0\xBD", 3},
         }) {
        EXPECT_EQ(DiagnosticLog::sanitize(text, count), text) << why;
        EXPECT_EQ(DiagnosticLog::sanitize(text + "z", count), text + "\u2026") << why;
        EXPECT_NE(DiagnosticLog::sanitize(text, count - 1), text) << why;
    }
}

}  // namespace
}  // namespace tallowbrook
