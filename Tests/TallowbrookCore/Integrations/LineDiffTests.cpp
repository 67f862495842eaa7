#include "Integrations/LineDiff.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace tallowbrook {
namespace {

using LineDiff::Step;
using LineDiff::StepKind;
using Lines = std::vector<std::string>;

constexpr auto equal = StepKind::equal;
constexpr auto delete_ = StepKind::delete_;
constexpr auto insert = StepKind::insert;

// The lines first, first + 1, … up to last.
std::string numbered(int first, int last) {
    std::string text;
    for (int i = first; i <= last; ++i) text += std::to_string(i) + "\n";
    return text;
}

std::string replaced(std::string text, const std::string& old, const std::string& with) {
    return text.replace(text.find(old), old.size(), with);
}

std::optional<std::string> diff(const std::optional<std::string>& oldText,
                                const std::optional<std::string>& newText,
                                std::size_t context = 2) {
    return LineDiff::unified(oldText, newText, "old", "new", context);
}

const std::string header = "--- old\n+++ new\n";

// Only the lines that begin hunks.
Lines hunksOf(const std::optional<std::string>& unified) {
    Lines hunks = LineDiff::lines(unified);
    std::erase_if(hunks, [](const std::string& line) { return !line.starts_with("@@"); });
    return hunks;
}

TEST(Lines, endWithALineFeedAlone) {
    struct Row {
        std::optional<std::string> text;
        Lines lines;
    };
    for (const auto& [text, lines] : {
             Row{std::nullopt, {}},
             Row{"", {}},
             Row{"\n", {""}},
             Row{"a", {"a"}},
             Row{"a\n", {"a"}},
             Row{"a\nb", {"a", "b"}},
             Row{"a\n\n", {"a", ""}},
             Row{"\na\n\nb\n", {"", "a", "", "b"}},
             Row{"a\r\nb\rc", {"a\r", "b\rc"}},
         })
        EXPECT_EQ(LineDiff::lines(text), lines);
}

TEST(EditScript, deletesAChangedLineBeforeItInserts) {
    EXPECT_EQ(
        LineDiff::editScript(Lines{"a", "b", "c"}, Lines{"a", "x", "c"}),
        (std::vector<Step>{
            {equal, "a", 0, 0}, {delete_, "b", 1, 1}, {insert, "x", 2, 1}, {equal, "c", 2, 2}}));
}

TEST(EditScript, knowsWhereEachStepStandsOnBothSides) {
    EXPECT_EQ(LineDiff::editScript(Lines{"a", "b"}, Lines{"n", "a", "b", "m", "o"}),
              (std::vector<Step>{{insert, "n", 0, 0},
                                 {equal, "a", 0, 1},
                                 {equal, "b", 1, 2},
                                 {insert, "m", 2, 3},
                                 {insert, "o", 2, 4}}));
    EXPECT_EQ(LineDiff::editScript(Lines{"a", "b"}, Lines{}),
              (std::vector<Step>{{delete_, "a", 0, 0}, {delete_, "b", 1, 0}}));
}

TEST(EditScript, keepsALongestCommonSubsequence) {
    // Of the two that there are, b d and c d, the tie is broken by deleting first.
    EXPECT_EQ(
        LineDiff::editScript(Lines{"b", "c", "d"}, Lines{"c", "b", "d"}),
        (std::vector<Step>{
            {delete_, "b", 0, 0}, {equal, "c", 1, 0}, {insert, "b", 2, 1}, {equal, "d", 2, 2}}));
    const auto steps = LineDiff::editScript(Lines{"a", "b", "c", "a", "b", "b", "a"},
                                            Lines{"c", "b", "a", "b", "a", "c"});
    EXPECT_EQ(std::ranges::count(steps, equal, &Step::kind), 4);
}

TEST(EditScript, comparesLinesByEveryByte) {
    const auto steps = LineDiff::editScript(Lines{"a", "b ", "é"}, Lines{"A", "b", "e\u0301"});
    EXPECT_EQ(std::ranges::count(steps, equal, &Step::kind), 0);
}

TEST(EditScript, givesUpComparingAboveFourMillionPairs) {
    const Lines twoThousand(2000, "same");
    const auto compared = LineDiff::editScript(twoThousand, twoThousand);
    EXPECT_EQ(std::ranges::count(compared, equal, &Step::kind), 2000);

    Lines oneMore = twoThousand;
    oneMore.push_back("same");
    const auto coarse = LineDiff::editScript(twoThousand, oneMore);
    ASSERT_EQ(coarse.size(), 4001U);
    for (std::size_t i = 0; i < coarse.size(); ++i) {
        const bool isOld = i < 2000;
        ASSERT_EQ(coarse[i],
                  (Step{isOld ? delete_ : insert, "same", isOld ? i : 2000, isOld ? 0 : i - 2000}));
    }
}

TEST(Unified, isAbsentWhereNoLineChanges) {
    EXPECT_EQ(diff(std::nullopt, std::nullopt), std::nullopt);
    EXPECT_EQ(diff("", ""), std::nullopt);
    EXPECT_EQ(diff("a\nb", "a\nb\n"), std::nullopt) << "the last line feed makes no difference";
}

TEST(Unified, namesBothSidesAndShowsEachHunkWithItsContext) {
    const std::string fiveLines = numbered(1, 5);
    struct Row {
        std::optional<std::string> oldText;
        std::optional<std::string> newText;
        std::string diff;
        std::size_t context = 2;
    };
    for (const auto& [oldText, newText, expected, context] : {
             Row{std::nullopt, "", "--- /dev/null\n+++ new\n"},
             Row{"", std::nullopt, "--- old\n+++ /dev/null\n"},
             Row{std::nullopt, "a\n", "--- /dev/null\n+++ new\n@@ -1,0 +1,1 @@\n+a\n"},
             Row{"a\nb\n", std::nullopt, "--- old\n+++ /dev/null\n@@ -1,2 +1,0 @@\n-a\n-b\n"},
             Row{"", "a\n", header + "@@ -1,0 +1,1 @@\n+a\n"},
             Row{numbered(1, 10), replaced(numbered(1, 10), "5", "five"),
                 header + "@@ -3,5 +3,5 @@\n 3\n 4\n-5\n+five\n 6\n 7\n"},
             Row{fiveLines, "x\n" + fiveLines, header + "@@ -1,2 +1,3 @@\n+x\n 1\n 2\n"},
             Row{fiveLines, numbered(1, 4), header + "@@ -3,3 +3,2 @@\n 3\n 4\n-5\n"},
             Row{"a\nb\nc\n", "a\nb\nx\nc\n", header + "@@ -3,0 +3,1 @@\n+x\n", 0},
             Row{"a\nb\nc\n", "a\nc\n", header + "@@ -2,1 +2,0 @@\n-b\n", 0},
             Row{"a\r\n", "a\n", header + "@@ -1,1 +1,1 @@\n-a\r\n+a\n"},
             Row{"-\n\n", "+\n@@ é\n", header + "@@ -1,2 +1,2 @@\n--\n-\n++\n+@@ é\n"},
         })
        EXPECT_EQ(diff(oldText, newText, context), expected);
}

TEST(Unified, joinsChangesUpToFiveStepsApart) {
    // Inserts in front of two lines, so that the steps between them are the lines between them.
    const auto withMarks = [](int second) {
        return replaced(replaced(numbered(1, 20), "5\n", "x\n5\n"),
                        "\n" + std::to_string(second) + "\n",
                        "\ny\n" + std::to_string(second) + "\n");
    };
    EXPECT_EQ(hunksOf(diff(numbered(1, 20), withMarks(9))), (Lines{"@@ -3,8 +3,10 @@"}))
        << "five steps apart";
    EXPECT_EQ(hunksOf(diff(numbered(1, 20), withMarks(10))),
              (Lines{"@@ -3,4 +3,5 @@", "@@ -8,4 +9,5 @@"}))
        << "six steps apart";
}

TEST(Unified, countsFromWhereTheHunkBeginsOnEachSide) {
    EXPECT_EQ(hunksOf(diff(numbered(1, 20), "a\nb\nc\n" + replaced(numbered(1, 20), "15\n", ""))),
              (Lines{"@@ -1,2 +1,5 @@", "@@ -13,5 +16,4 @@"}));
}

TEST(Unified, takesAnyContext) {
    const auto whole = diff(numbered(1, 9), replaced(numbered(1, 9), "5", "x"),
                            std::numeric_limits<std::size_t>::max());
    EXPECT_EQ(hunksOf(whole), (Lines{"@@ -1,9 +1,9 @@"}));
    EXPECT_EQ(LineDiff::lines(whole).size(), 13U);
    EXPECT_EQ(hunksOf(diff("1\n2\n", "x\n2\ny\n", 0)),
              (Lines{"@@ -1,1 +1,1 @@", "@@ -3,0 +3,1 @@"}));
}

}  // namespace
}  // namespace tallowbrook
