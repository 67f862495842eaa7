#include "Setup/DiffView.h"

#include <gtest/gtest.h>

namespace tallowbrook::host {
namespace {

constexpr auto diff =
    "--- /a\n"
    "+++ /a\n"
    "@@ -1,2 +1,2 @@\n"
    " same\n"
    "--- gone\n"
    "+++ new\n";

TEST(DiffView, withoutColoursIsTheDiffItself) { EXPECT_EQ(showDiff(diff, Colour::off), diff); }

TEST(DiffView, tellsTheKindsOfLinesApartByColour) {
    EXPECT_EQ(showDiff(diff, Colour::on),
              "\x1B[1m--- /a\x1B[0m\n"
              "\x1B[1m+++ /a\x1B[0m\n"
              "\x1B[36m@@ -1,2 +1,2 @@\x1B[0m\n"
              " same\n"
              "\x1B[31m--- gone\x1B[0m\n"
              "\x1B[32m+++ new\x1B[0m\n");
}

TEST(DiffView, letsNoTextOfTheFileSpeakToTheTerminal) {
    EXPECT_EQ(showDiff("--- a\n+++ a\n+\x1B[2J\rz\r\r\n", Colour::off),
              "--- a\n+++ a\n+\xEF\xBF\xBD[2J\xEF\xBF\xBDz\xEF\xBF\xBD\r\n");
}

TEST(DiffView, leavesTheTabsThatIndentAFile) {
    EXPECT_EQ(showDiff("--- a\n+++ a\n+\t\t\"a\": 1\t\n", Colour::off),
              "--- a\n+++ a\n+\t\t\"a\": 1\t\n");
}

TEST(DiffView, leavesTheReturnsThatEndTheLinesOfAFile) {
    EXPECT_EQ(showDiff("--- a\n+++ a\n+one\r\n+two\r\n", Colour::off),
              "--- a\n+++ a\n+one\r\n+two\r\n");
    EXPECT_EQ(showDiff("--- a\n+++ a\n+one\r\n", Colour::on),
              "\x1B[1m--- a\x1B[0m\n\x1B[1m+++ a\x1B[0m\n\x1B[32m+one\x1B[0m\r\n");
}

TEST(DiffView, ofNothingIsEmpty) { EXPECT_EQ(showDiff("", Colour::on), ""); }

}  // namespace
}  // namespace tallowbrook::host
