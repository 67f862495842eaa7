#include "Text/UTF8.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tallowbrook {
namespace {

// Bytes are checked eight at a time where they are ASCII: every place in and around two such steps.
void expectAnywhere(std::string_view bytes, bool isValid) {
    for (std::size_t before = 0; before <= 17; ++before)
        for (const std::size_t after : {0U, 1U, 8U, 17U}) {
            const auto text =
                std::string(before, 'a') + std::string{bytes} + std::string(after, 'z');
            ASSERT_EQ(UTF8::isValid(text), isValid)
                << testing::PrintToString(bytes) << " behind " << before << " before " << after;
        }
}

TEST(UTF8, isValidWithTheFirstAndLastCharacterOfEachLength) {
    using namespace std::string_view_literals;
    EXPECT_TRUE(UTF8::isValid(""));
    for (const auto text : {"\0"sv, "\x7F"sv, "\xC2\x80"sv, "\xDF\xBF"sv, "\xE0\xA0\x80"sv,
                            "\xEF\xBF\xBF"sv, "\xF0\x90\x80\x80"sv, "\xF4\x8F\xBF\xBF"sv})
        expectAnywhere(text, true);
}

TEST(UTF8, isValidOnBothSidesOfTheSurrogates) {
    for (const char* text : {"\xED\x9F\xBF", "\xEE\x80\x80"}) expectAnywhere(text, true);
    for (const char* text : {"\xED\xA0\x80", "\xED\xBF\xBF"}) expectAnywhere(text, false);
}

TEST(UTF8, isInvalidWithAnythingElse) {
    struct Row {
        const char* why;
        const char* bytes;
    };
    for (const auto& [why, bytes] : {
             Row{"the first continuation by itself", "\x80"},
             Row{"the last continuation by itself", "\xBF"},
             Row{"one continuation too many", "\xC3\xA9\x80"},
             Row{"an overlong slash", "\xC0\xAF"},
             Row{"the last overlong form of two bytes", "\xC1\xBF"},
             Row{"the last overlong form of three bytes", "\xE0\x9F\xBF"},
             Row{"the last overlong form of four bytes", "\xF0\x8F\xBF\xBF"},
             Row{"above U+10FFFF", "\xF4\x90\x80\x80"},
             Row{"a lead of larger numbers", "\xF5\x80\x80\x80"},
             Row{"five bytes", "\xF8\x88\x80\x80\x80"},
             Row{"no lead at all", "\xFE"},
             Row{"nor this", "\xFF"},
             Row{"two bytes cut to one", "\xC3"},
             Row{"three bytes cut to one", "\xE2"},
             Row{"three bytes cut to two", "\xE2\x82"},
             Row{"four bytes cut to one", "\xF0"},
             Row{"four bytes cut to two", "\xF0\x9F"},
             Row{"four bytes cut to three", "\xF0\x9F\x98"},
             Row{"a lead before a lead", "\xC3\xC3\xA9"},
         }) {
        SCOPED_TRACE(why);
        expectAnywhere(bytes, false);
    }
}

TEST(UTF8, replacesWhatIsInvalidAsTheUnicodeStandardRecommends) {
    struct Row {
        const char* bytes;
        const char* repaired;
    };
    for (const auto& [bytes, repaired] : {
             Row{"", ""},
             Row{"plain é € 😀", "plain é € 😀"},
             // The examples of the standard, chapter 3, on replacement.
             Row{"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41", "��������A"},
             Row{"\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41", "��������A"},
             Row{"\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42", "�����A��B"},
             Row{"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", "����A"},
             Row{"eight by\xFFte steps\xE2\x82", "eight by�te steps�"},
         }) {
        EXPECT_EQ(UTF8::replacingInvalid(bytes), repaired);
        EXPECT_TRUE(UTF8::isValid(UTF8::replacingInvalid(bytes)));
    }
}

}  // namespace
}  // namespace tallowbrook
