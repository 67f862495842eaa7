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
        EXPECT_EQ(identifier(text + "ab", 64).has_value(), isKept) << byte;
    }
}

TEST(FieldSanitizer, aTokenIsNeverMadeUp) {
    EXPECT_EQ(token(std::nullopt, 64), std::nullopt);
    EXPECT_EQ(token("", 64), std::nullopt);
    EXPECT_EQ(identifier(std::nullopt, 64), std::nullopt);
    EXPECT_EQ(identifier("", 64), std::nullopt);
    EXPECT_EQ(path(std::nullopt, 64), std::nullopt);
    EXPECT_EQ(path("", 64), std::nullopt);
}

TEST(FieldSanitizer, lengthsAreLimitedOnTheByte) {
    for (const std::size_t limit : {1U, 128U}) {
        const std::string longest(limit, 'a');
        EXPECT_EQ(token(longest, limit), longest) << limit;
        EXPECT_EQ(token(longest + "a", limit), std::nullopt) << limit;
        EXPECT_EQ(identifier(longest, limit), longest) << limit;
        EXPECT_EQ(identifier(longest + "a", limit), std::nullopt) << limit;
        // In bytes, whatever the characters.
        const std::string longestPath = limit < 3 ? "/" : "/" + longest.substr(3) + "\u00E9";
        EXPECT_EQ(path(longestPath, limit), longestPath) << limit;
        EXPECT_EQ(path(longestPath + "a", limit), std::nullopt) << limit;
    }
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
             Row{"///", "/"},
             Row{"/a/b//", "/a/b"},
             Row{"/Users/x/proj/", "/Users/x/proj"},
             Row{"/a//b", "/a//b"},
             Row{"/a/../b/.", "/a/../b/."},
             Row{"/a /", "/a "},
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
}

TEST(FieldSanitizer, aPathMayHoldEveryOtherCharacter) {
    for (const char* text : {"/caf\u00E9", "/\u65E5\u672C", "/\U0001F600", "/\u0080\u0085",
                             "/\u200B\u2028", "/\uFFFD\uFFFF", "/\U0010FFFF", "/a\"b\\c'd e*?<>|"})
        EXPECT_EQ(path(text, 1024), text) << text;
}

TEST(FieldSanitizer, aPathIsValidUTF8) {
    for (const char* text :
         {"/\x80", "/a\xC3", "/\xC0\xAF", "/\xED\xA0\xBD", "/caf\xE9", "/\xFF//"})
        EXPECT_EQ(path(text, 1024), std::nullopt) << text;
}

}  // namespace
}  // namespace tallowbrook
