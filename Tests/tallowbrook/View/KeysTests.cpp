#include "View/Keys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "Output/PrintableText.h"

namespace tallowbrook::host {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

TEST(Keys, meanWhatTheListSays) {
    EXPECT_EQ(actionOf(U'j'), Action::moveDown);
    EXPECT_EQ(actionOf(Keys::down), Action::moveDown);
    EXPECT_EQ(actionOf(Keys::tab), Action::nextWaiting);
    EXPECT_EQ(actionOf(Keys::enter), Action::focus);
    EXPECT_EQ(actionOf(U' '), Action::explain);
    EXPECT_EQ(actionOf(U'q'), Action::quit);
}

TEST(Keys, meanNothingWhereNothingIsListed) {
    for (const Key key : {Key{0}, U'x', U'Q', U'y', U'ä', Keys::backspace, Keys::pasteBegins})
        EXPECT_EQ(actionOf(key), std::nullopt) << static_cast<std::uint32_t>(key);
}

TEST(Keys, areListedWithEveryActionThatIsOffered) {
    EXPECT_EQ(listOfKeys(allActions()).size(), allActions().size());
    std::map<std::string, std::string> list;
    for (const auto& [names, meaning] : listOfKeys(allActions())) list[names] = meaning;
    EXPECT_EQ(list.size(), allActions().size()) << "no key is listed twice";
    EXPECT_EQ(list["n, Tab"], "to the next session that waits");
    EXPECT_EQ(list["q"], "quit");
}

TEST(Keys, areNotListedWhereTheirActionIsNotOffered) {
    auto offered = allActions();
    offered.erase(Action::mute);
    for (const auto& [names, meaning] : listOfKeys(offered)) EXPECT_NE(names, "m");
    EXPECT_THAT(hintLine(offered, 400), Not(HasSubstr("mute")));
    EXPECT_THAT(hintLine(allActions(), 400), HasSubstr("m mute"));
}

TEST(HintLine, keepsTheListOfKeysAndTheWayOutLongest) {
    EXPECT_THAT(hintLine(allActions(), 400), EndsWith("? keys  q quit"));
    EXPECT_EQ(hintLine(allActions(), 19), "? keys  q quit");
    EXPECT_EQ(hintLine(allActions(), 10), "? keys");
}

TEST(HintLine, fillsTheColumnsAndNoMore) {
    std::size_t before = 0;
    for (std::size_t columns = 6; columns < 200; ++columns) {
        const auto width = PrintableText::width(hintLine(allActions(), columns));
        EXPECT_LE(width, columns);
        EXPECT_GE(width, before);
        before = width;
    }
}

}  // namespace
}  // namespace tallowbrook::host
