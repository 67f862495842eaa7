#include "View/Frame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallowbrook::host {
namespace {

using testing::HasSubstr;
using testing::Not;

// A terminal whose orders can be read.
TerminalText plainTerminal() {
    TerminalText terminal;
    terminal.clear = "<clear>";
    terminal.clearLine = "<el>";
    terminal.moveTo = [](std::size_t row, std::size_t column) {
        return "<" + std::to_string(row) + "," + std::to_string(column) + ">";
    };
    terminal.showCursor = "<on>";
    terminal.hideCursor = "<off>";
    terminal.normal = "<n>";
    terminal.bold = "<b>";
    terminal.reverse = "<r>";
    terminal.colours = {{Colour::red, "<red>"}};
    terminal.hasUnicode = true;
    return terminal;
}

Picture picture(std::vector<PictureLine> lines) {
    Picture result;
    result.size = {20, lines.size()};
    result.lines = std::move(lines);
    return result;
}

TEST(Frame, isEmptyWhereNothingHasChanged) {
    const auto same = picture({{{0, "one", {}}}, {}});
    EXPECT_EQ(frame(&same, same, plainTerminal()), "");
}

TEST(Frame, drawsAllOfTheFirstPicture) {
    const auto first = picture({{{0, "one", {}}}, {}, {{0, "a", {}}, {4, "b", {.bold = true}}}});
    EXPECT_EQ(frame(nullptr, first, plainTerminal()),
              "<off><n><clear><0,0><n><el><n>one<2,0><n><el><n>a<2,4><n><b>b<n>");
}

TEST(Frame, drawsOnlyTheLinesThatDiffer) {
    const auto before = picture({{{0, "one", {}}}, {{0, "two", {}}}, {{0, "three", {}}}});
    const auto after = picture({{{0, "one", {}}}, {{0, "2", {}}}, {}});
    EXPECT_EQ(frame(&before, after, plainTerminal()), "<off><1,0><n><el><n>2<2,0><n><el><n>");
}

TEST(Frame, drawsAllOfAPictureOfAnotherSize) {
    const auto before = picture({{{0, "one", {}}}});
    auto after = before;
    after.size.columns = 30;
    EXPECT_THAT(frame(&before, after, plainTerminal()), HasSubstr("<clear><0,0>"));
}

TEST(Frame, drawsALineAgainWhoseStyleAloneHasChanged) {
    const auto before = picture({{{0, "one", {}}}});
    const auto after = picture({{{0, "one", {.colour = Colour::red, .reverse = true}}}});
    EXPECT_THAT(frame(&before, after, plainTerminal()), HasSubstr("<n><red><r>one"));
}

TEST(Frame, givesATerminalWithoutColoursTheWordsAndTheOtherStyles) {
    auto terminal = plainTerminal();
    terminal.colours.clear();
    const auto one = picture({{{0, "one", {.colour = Colour::red, .bold = true}}}});
    EXPECT_THAT(frame(nullptr, one, terminal), HasSubstr("<n><b>one"));
}

TEST(Frame, showsTheCursorWhereSomethingIsTyped) {
    auto typing = picture({{{0, "one", {}}}});
    typing.cursor = 3;
    EXPECT_THAT(frame(nullptr, typing, plainTerminal()), HasSubstr("<n><0,3><on>"));
    EXPECT_THAT(frame(&typing, picture({{{0, "one", {}}}}), plainTerminal()),
                Not(HasSubstr("<on>")));
}

TEST(Frame, speaksASCIIToATerminalThatKnowsNothingElse) {
    auto terminal = plainTerminal();
    terminal.hasUnicode = false;
    const auto one = picture({{{0, "› ● ✗ ▸ ○ ■ · ✓ ↑ ↓ … — ─ é 日", {}}}});
    EXPECT_THAT(frame(nullptr, one, terminal), HasSubstr("> ! x > ? # . + ^ v ~ - - ? ??"));
}

}  // namespace
}  // namespace tallowbrook::host
