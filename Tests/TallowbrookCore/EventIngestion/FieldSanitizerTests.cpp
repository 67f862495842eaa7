#include "EventIngestion/FieldSanitizer.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tallowbrook {
namespace {

using FieldSanitizer::identifier;
using FieldSanitizer::path;
using FieldSanitizer::token;

TEST(FieldSanitizer, aTokenHoldsOnlyLettersDigitsAndFourMarks) {
    constexpr std::string_view kept =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-.:_";
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        const bool isKept = kept.find(text) != std::string_view::npos;
        EXPECT_EQ(token(text, 64).has_value(), isKept) << byte;
        EXPECT_EQ(token("a" + text + "b", 64).has_value(), isKept) << byte;
        EXPECT_EQ(token("ab" + text, 64).has_value(), isKept) << byte;
        EXPECT_EQ(identifier(text + "ab", 64).has_value(), isKept) << byte;
    }
}

TEST(FieldSanitizer, aTokenIsKeptWhole) {
    EXPECT_EQ(token("mcp__probe:ask-1.2", 64), "mcp__probe:ask-1.2");
    EXPECT_EQ(identifier("f574f32b-e599-41af", 64), "f574f32b-e599-41af");
}

TEST(FieldSanitizer, aTokenIsNeverMadeUp) {
    EXPECT_EQ(token(std::nullopt, 64), std::nullopt);
    EXPECT_EQ(token("", 64), std::nullopt);
    EXPECT_EQ(identifier(std::nullopt, 64), std::nullopt);
    EXPECT_EQ(identifier("", 64), std::nullopt);
    EXPECT_EQ(path(std::nullopt, 64), std::nullopt);
    EXPECT_EQ(path("", 64), std::nullopt);
}

TEST(FieldSanitizer, aTokenHasNoCharacterBeyondASCII) {
    for (const char* text : {"caf\u00E9", "\uFF11", "\u0430", "a\u200Bb", "\U0001F600", "a\u0301"})
        EXPECT_EQ(token(text, 64), std::nullopt) << text;
}

TEST(FieldSanitizer, lengthsAreLimitedOnTheByte) {
    for (const std::size_t limit : {1U, 64U, 128U, 1024U}) {
        const std::string longest(limit, 'a');
        EXPECT_EQ(token(longest, limit), longest) << limit;
        EXPECT_EQ(token(longest + "a", limit), std::nullopt) << limit;
        EXPECT_EQ(identifier(longest, limit), longest) << limit;
        EXPECT_EQ(identifier(longest + "a", limit), std::nullopt) << limit;
        const std::string longestPath = "/" + longest.substr(1);
        EXPECT_EQ(path(longestPath, limit), longestPath) << limit;
        EXPECT_EQ(path(longestPath + "a", limit), std::nullopt) << limit;
    }
}

TEST(FieldSanitizer, aPathsLengthIsCountedInBytes) {
    EXPECT_TRUE(path("/\u65E5\u672C", 7));
    EXPECT_FALSE(path("/\u65E5\u672C", 6));
}

TEST(FieldSanitizer, aPathsLengthIsCountedBeforeItsSlashesGo) {
    const std::string path1024 = "/" + std::string(1022, 'a') + "/";
    EXPECT_EQ(path(path1024, 1024), path1024.substr(0, 1023));
    EXPECT_EQ(path(path1024 + "/", 1024), std::nullopt);
}

TEST(FieldSanitizer, aPathLosesTheSlashesAtItsEnd) {
    struct Row {
        const char* text;
        const char* kept;
    };
    for (const auto& [text, kept] : {
             Row{"/", "/"},
             Row{"//", "/"},
             Row{"///", "/"},
             Row{"/a", "/a"},
             Row{"/a/", "/a"},
             Row{"/a/b//", "/a/b"},
             Row{"/Users/x/proj/", "/Users/x/proj"},
             Row{"//a", "//a"},
             Row{"/a//b", "/a//b"},
             Row{"/a/../b/.", "/a/../b/."},
             Row{"/a /", "/a "},
             Row{"/ ", "/ "},
         })
        EXPECT_EQ(path(text, 1024), kept) << text;
}

TEST(FieldSanitizer, aPathIsAbsolute) {
    for (const char* text :
         {"proj/src", "./proj", "~/proj", " /proj", "C:\\proj", "file:///proj", "\\", "\u2215proj"})
        EXPECT_EQ(path(text, 1024), std::nullopt) << text;
}

TEST(FieldSanitizer, aPathHasNoControlCharacters) {
    for (int byte = 0; byte < 0x80; ++byte) {
        const std::string text = "/a" + std::string(1, static_cast<char>(byte)) + "b";
        const bool isControl = byte < 0x20 || byte == 0x7F;
        EXPECT_EQ(path(text, 1024).has_value(), !isControl) << byte;
    }
    EXPECT_EQ(path("/a\n", 1024), std::nullopt);
    EXPECT_EQ(path("/a\t/", 1024), std::nullopt);
    EXPECT_EQ(path((std::string{"/a\0", 3}), 1024), std::nullopt);
}

TEST(FieldSanitizer, aPathMayHoldEveryOtherCharacter) {
    for (const char* text : {"/caf\u00E9", "/\u65E5\u672C", "/\U0001F600", "/\u0080\u0085",
                             "/\u200B\u2028", "/\uFFFD\uFFFF", "/\U0010FFFF", "/a\"b\\c'd e*?<>|"})
        EXPECT_EQ(path(text, 1024), text) << text;
}

TEST(FieldSanitizer, aPathIsValidUTF8) {
    struct Row {
        const char* why;
        const char* text;
    };
    for (const auto& [why, text] : {
             Row{"continuation alone", "/\x80"},
             Row{"two-byte character cut at the end", "/a\xC3"},
             Row{"cut in the middle", "/\xC3/a"},
             Row{"three-byte character cut", "/\xE6\x97"},
             Row{"four-byte character cut", "/\xF0\x9F\x98"},
             Row{"slash in two bytes", "/\xC0\xAF"},
             Row{"slash in three bytes", "/\xE0\x80\xAF"},
             Row{"zero in two bytes", "/\xC0\x80"},
             Row{"overlong four bytes", "/\xF0\x80\x80\xAF"},
             Row{"high surrogate", "/\xED\xA0\xBD"},
             Row{"low surrogate", "/\xED\xB8\x80"},
             Row{"surrogate pair", "/\xED\xA0\xBD\xED\xB8\x80"},
             Row{"beyond the last code point", "/\xF4\x90\x80\x80"},
             Row{"five-byte form", "/\xF8\x88\x80\x80\x80"},
             Row{"never in UTF-8", "/\xFE\xFF"},
             Row{"Latin-1", "/caf\xE9"},
             Row{"before the slashes at the end", "/\xFF//"},
         })
        EXPECT_EQ(path(text, 1024), std::nullopt) << why;
}

}  // namespace
}  // namespace tallowbrook
