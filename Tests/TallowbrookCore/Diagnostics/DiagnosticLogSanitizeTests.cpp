#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "Diagnostics/DiagnosticLog.h"
#include "Support/ChildProcess.h"
#include "Support/EnvironmentVariable.h"
#include "Support/OrdinaryUser.h"
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
             Row{"nothing of it", "nothing of it"},
             Row{"/Users/alice", "~"},
             Row{"/Users/alice/proj", "~/proj"},
             Row{"in /Users/alice/proj: bad", "in ~/proj: bad"},
             Row{"/Users/alice/a and /Users/alice/b", "~/a and ~/b"},
             Row{"/Users/alice/Users/alice", "~~"},
             Row{"/Users/alice/Users/alice/", "~~/"},
             Row{"//Users/alice", "/~"},
             Row{"/Volumes/Users/alice", "/Volumes~"},
             Row{"/Users/alice2/proj", "~2/proj"},
             Row{"/Users/Alice/proj", "/Users/Alice/proj"},
             Row{"/Users/alic", "/Users/alic"},
             Row{"/Users/alic\ne", "/Users/alic e"},
             Row{"~/proj", "~/proj"},
         })
        EXPECT_EQ(sanitized(text), expected) << text;
}

TEST_F(DiagnosticLogSanitizeTest, takesAHomeWithASlashAtItsEnd) {
    const EnvironmentVariable other{"HOME", "/Users/alice/"};
    EXPECT_EQ(sanitized("/Users/alice/proj"), "~/proj");
    EXPECT_EQ(sanitized("/Users/alice"), "~");
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

TEST_F(DiagnosticLogSanitizeTest, takesTheHomeOfTheAccountWhereTheEnvironmentHasNone) {
    const passwd* account = getpwuid(getuid());
    if (account == nullptr || account->pw_dir[0] != '/' || account->pw_dir[1] == '\0')
        GTEST_SKIP() << "no account with a home here";
    const std::string directory = account->pw_dir;
    for (const auto& value : {std::optional<std::string>{}, std::optional<std::string>{""},
                              std::optional<std::string>{"Users/alice"}}) {
        const EnvironmentVariable other{"HOME", value};
        EXPECT_EQ(sanitized("in " + directory + "/proj"), "in ~/proj") << value.value_or("unset");
        EXPECT_EQ(sanitized("Users/alice"), "Users/alice");
    }
}

TEST_F(DiagnosticLogSanitizeTest, abbreviatesNothingForAnUnknownHome) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    if (getpwuid(user->id) != nullptr) GTEST_SKIP() << "every user here has an account";
    const EnvironmentVariable other{"HOME", std::nullopt};
    EXPECT_EQ(inChildProcess(
                  [&] { return user->become() ? sanitized("/Users/alice /root /") : "same user"; }),
              "/Users/alice /root /");
}

TEST_F(DiagnosticLogSanitizeTest, turnsEachControlCharacterIntoOneBlank) {
    for (int byte = 0; byte < 0x80; ++byte) {
        const std::string character(1, static_cast<char>(byte));
        const bool isControl = byte < 0x20 || byte == 0x7F;
        EXPECT_EQ(sanitized("a" + character + "b"), "a" + (isControl ? " " : character) + "b")
            << byte;
    }
    EXPECT_EQ(sanitized("a\r\n\tb"), "a   b");
    EXPECT_EQ(sanitized({"\0\0", 2}), "  ");
}

TEST_F(DiagnosticLogSanitizeTest, leavesOtherCharactersAlone) {
    for (const char* text :
         {"caf\u00E9", "\u0080\u0085\u009F", "\u2028\u2029\u200B\uFEFF", "\U0001F600", "\"\\'`$<>"})
        EXPECT_EQ(sanitized(text), text);
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
    "e\u0301\u0323\u20DD",
    "\u65E5",
    "\U0001F600",
    "\U0001F1E9\U0001F1EA",                        // flag
    "\U0001F468\u200D\U0001F469\u200D\U0001F467",  // family, joined by zero-width joiners
    "\U0001F44D\U0001F3FD",                        // thumb with its skin tone
    "\u2764\uFE0F",                                // heart with its variation selector
    "\U0001F3F4\U000E0067\U000E0062\U000E0073\U000E0063\U000E0074\U000E007F",  // flag of tags
    "\u1112\u1161\u11AB",  // a syllable of three letters
    "\u0915\u093F",        // letter and vowel sign
    "\u0E01\u0E33",
    "\xFF",  // no UTF-8: counts for itself
    "\x80",
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

TEST_F(DiagnosticLogSanitizeTest, countsCharactersOfAllKindsBesideEachOther) {
    for (const auto& before : characters)
        for (const auto& after : characters) {
            const std::string text = before + "-" + after;
            EXPECT_EQ(DiagnosticLog::sanitize(text, 3), text);
            EXPECT_EQ(DiagnosticLog::sanitize(text + "x", 3), text + "\u2026") << text;
            EXPECT_EQ(DiagnosticLog::sanitize(text, 2), before + "-\u2026") << text;
        }
}

TEST_F(DiagnosticLogSanitizeTest, keepsMarksWithTheLastCharacterThatStays) {
    const std::string start(399, 'x');
    EXPECT_EQ(sanitized(start + "e\u0301"), start + "e\u0301");
    EXPECT_EQ(sanitized(start + "e\u0301x"), start + "e\u0301\u2026");
    EXPECT_EQ(sanitized(start + "\U0001F468\u200D\U0001F469x"),
              start + "\U0001F468\u200D\U0001F469\u2026");
}

TEST_F(DiagnosticLogSanitizeTest, pairsTheLettersOfFlags) {
    // Three letters are a flag and a half.
    const std::string letter = "\U0001F1E9";
    EXPECT_EQ(DiagnosticLog::sanitize(repeated(letter, 3), 2), repeated(letter, 3));
    EXPECT_EQ(DiagnosticLog::sanitize(repeated(letter, 3), 1), repeated(letter, 2) + "\u2026");
    EXPECT_EQ(DiagnosticLog::sanitize(repeated(letter, 5), 2), repeated(letter, 4) + "\u2026");
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
             Row{"between the letters of a later flag", "x\U0001F1E9\xFF\U0001F1EA", 4},
             Row{"between joined pictures, later", "x\U0001F468\u200D\xFF\U0001F469", 4},
             Row{"between joined pictures", "\U0001F468\u200D\xFF\U0001F469", 3},
             Row{"before a flag", "\xFF\U0001F1E9\U0001F1EA", 2},
             Row{"behind a flag", "\U0001F1E9\U0001F1EA\xFF", 2},
             Row{"between two flags", "\U0001F1E9\U0001F1EA\xFF\U0001F1E9\U0001F1EA", 3},
             Row{"behind half a flag, before a flag", "\U0001F1E9\xFF\U0001F1E9\U0001F1EA", 3},
             Row{"surrogate", "\xED\xA0\xBD", 3},
         }) {
        EXPECT_EQ(DiagnosticLog::sanitize(text, count), text) << why;
        EXPECT_EQ(DiagnosticLog::sanitize(text + "z", count), text + "\u2026") << why;
        EXPECT_NE(DiagnosticLog::sanitize(text, count - 1), text) << why;
    }
}

TEST_F(DiagnosticLogSanitizeTest, keepsNothingOfATextThatMayHaveNoCharacters) {
    EXPECT_EQ(DiagnosticLog::sanitize("", 0), "");
    EXPECT_EQ(DiagnosticLog::sanitize("x", 0), "\u2026");
}

}  // namespace
}  // namespace tallowbrook
