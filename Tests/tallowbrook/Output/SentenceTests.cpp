#include "Output/Sentence.h"

#include <gtest/gtest.h>

namespace tallowbrook::host {
namespace {

TEST(Sentence, endsInAFullStopUnlessItEndsAlready) {
    EXPECT_EQ(Sentence{"Is a directory"}.text(), "Is a directory.");
    EXPECT_EQ(Sentence{"It was not modified."}.text(), "It was not modified.");
    EXPECT_EQ(Sentence{"Which one?"}.text(), "Which one?");
    EXPECT_EQ(Sentence{""}.text(), "");
}

TEST(Sentence, standsApartFromTheOneBehindIt) {
    EXPECT_EQ(Sentence{"Is a directory"}.followedBy("Nothing was changed").text(),
              "Is a directory. Nothing was changed.");
}

}  // namespace
}  // namespace tallowbrook::host
