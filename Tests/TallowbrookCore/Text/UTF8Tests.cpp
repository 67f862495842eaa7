#include "Text/UTF8.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tallowbrook {
namespace {

void expectAnywhere(std::string_view bytes, bool isValid) {
    const std::string text{bytes};
    for (const auto& whole : {text, "a" + text, text + "z", "\u00E9" + text + "\u00E9"})
        ASSERT_EQ(UTF8::isValid(whole), isValid) << testing::PrintToString(whole);
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
    for (const char* bytes : {"\x80",          // a continuation by itself
                              "\xC3\xA9\x80",  // one too many
                              "\xC1\xBF",      // overlong forms
                              "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF",
                              "\xF4\x90\x80\x80",  // above U+10FFFF
                              "\xF8\x88\x80\x80\x80", "\xFF",
                              "\xC3",  // cut
                              "\xE2\x82", "\xF0\x9F\x98", "\xC3\xC3\xA9"})
        expectAnywhere(bytes, false);
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
