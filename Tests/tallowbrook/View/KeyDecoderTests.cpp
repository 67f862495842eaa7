#include "View/KeyDecoder.h"

#include <gtest/gtest.h>

namespace tallowbrook::host {
namespace {

using KeyList = std::vector<Key>;

KeyDecoder decoder() {
    return KeyDecoder{{{"\x1BOA", Keys::up}, {"\x1B[B", Keys::down}, {"\x1B[5~", Keys::pageUp}}};
}

TEST(KeyDecoder, givesCharactersAsTheyCome) {
    auto keys = decoder();
    EXPECT_EQ(keys.take("jk\t"), (KeyList{U'j', U'k', Keys::tab}));
    EXPECT_EQ(keys.take("ä…"), (KeyList{U'ä', U'…'}));
    EXPECT_FALSE(keys.isPending());
}

TEST(KeyDecoder, takesBothFormsOfEnterAndBackspaceForOneKey) {
    auto keys = decoder();
    EXPECT_EQ(keys.take("\r\n\b\x7F"),
              (KeyList{Keys::enter, Keys::enter, Keys::backspace, Keys::backspace}));
}

TEST(KeyDecoder, knowsTheKeysOfTheTerminal) {
    auto keys = decoder();
    EXPECT_EQ(keys.take("\x1BOA\x1B[B\x1B[5~j"),
              (KeyList{Keys::up, Keys::down, Keys::pageUp, U'j'}));
}

TEST(KeyDecoder, waitsForTheRestOfAKeyThatComesInPieces) {
    for (const std::string whole : {"\x1BOA", "ä", "…"}) {
        auto keys = decoder();
        KeyList got;
        for (const char byte : whole) {
            EXPECT_TRUE(got.empty());
            got = keys.take({&byte, 1});
        }
        EXPECT_EQ(got, (KeyList{whole[0] == '\x1B' ? Keys::up : whole.size() == 2 ? U'ä' : U'…'}));
        EXPECT_FALSE(keys.isPending());
    }
}

TEST(KeyDecoder, takesAnEscapeBehindWhichNothingComesForTheEscKey) {
    auto keys = decoder();
    EXPECT_EQ(keys.take("\x1B"), KeyList{});
    EXPECT_TRUE(keys.isPending());
    EXPECT_EQ(keys.takeRest(), KeyList{Keys::escape});
    EXPECT_FALSE(keys.isPending());
}

TEST(KeyDecoder, givesWhatWasTypedBehindTheEscKeyToo) {
    auto keys = decoder();
    EXPECT_EQ(keys.take("\x1B["), KeyList{});
    EXPECT_EQ(keys.takeRest(), (KeyList{Keys::escape, U'['}));
    EXPECT_EQ(keys.take("\x1B\x1B"), KeyList{Keys::escape});
    EXPECT_EQ(keys.takeRest(), KeyList{Keys::escape});
}

TEST(KeyDecoder, passesOverSequencesThatNobodyKnowsAsAWhole) {
    auto keys = decoder();
    for (const char* unknown : {"\x1B[1;5A", "\x1B[<0;10;10M", "\x1B[?1;2c", "\x1BOz", "\x1Bq"})
        EXPECT_EQ(keys.take(unknown + std::string{"j"}), KeyList{U'j'}) << unknown + 1;
}

TEST(KeyDecoder, passesOverBytesThatAreNoUTF8) {
    auto keys = decoder();
    EXPECT_EQ(keys.take("\x80\xFFj\xC3(k"), (KeyList{U'j', U'(', U'k'}));
    EXPECT_FALSE(keys.isPending());
}

}  // namespace
}  // namespace tallowbrook::host
