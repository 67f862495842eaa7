#include "Channels/NotificationText.h"

#include <gtest/gtest.h>

#include "Support/RepeatedText.h"

namespace tallowbrook::host::NotificationText {
namespace {

TEST(NotificationText, isOneLineWithoutWhatMovesACursorOrTurnsTheWriting) {
    EXPECT_EQ(plain("a\x1B[31mb\x07\x7F"
                    "c",
                    80),
              "a[31mbc");
    EXPECT_EQ(plain("two\nlines\tand a \xE2\x80\xA8third", 80), "two lines and a  third");
    EXPECT_EQ(plain("exe.\xE2\x80\xAEgpj", 80), "exe.gpj");
    EXPECT_EQ(plain("\xFFtext\xC3", 80), "text");
    EXPECT_EQ(plain(std::string{"a\0b", 3}, 80), "ab");
}

TEST(NotificationText, keepsEmojiWhole) {
    const std::string family = "👩‍👩‍👧‍👦";
    EXPECT_EQ(plain(family + "❤️🇩🇪", 3), family + "❤️🇩🇪");
    EXPECT_EQ(plain("ab" + family + "cd", 4), "ab" + family + "…");
    EXPECT_EQ(plain("ab" + family + "cd", 3), "ab…");
}

TEST(NotificationText, isCutBetweenUserPerceivedCharacters) {
    EXPECT_EQ(plain("abcd", 4), "abcd");
    EXPECT_EQ(plain("abcde", 4), "abc…");
    const auto accented = repeated("e\xCC\x81", 3400);
    EXPECT_EQ(plain(accented, 500), repeated("e\xCC\x81", 499) + "…");
    EXPECT_EQ(plain("", 4), "");
}

TEST(NotificationText, holdsNoTowerOfMarks) {
    const auto tower = "a" + repeated("\xCC\x81", 5000) + "b";
    const auto text = plain(tower, 80);
    EXPECT_LT(text.size(), 80U);
    EXPECT_TRUE(text.ends_with("b"));
}

TEST(NotificationText, showsMarkupAsItStands) {
    EXPECT_EQ(escapedMarkup("<b>R&D</b> \"x\""), "&lt;b&gt;R&amp;D&lt;/b&gt; \"x\"");
}

}  // namespace
}  // namespace tallowbrook::host::NotificationText
