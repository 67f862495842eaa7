#include "View/ViewState.h"

#include <gtest/gtest.h>

#include "ViewSessions.h"

namespace tallowbrook::host {
namespace {

using Names = std::vector<std::string>;
using enum SessionStatus;

constexpr std::size_t pageHeight = 5;

Names projects(const std::vector<const ListedSession*>& sessions) {
    Names names;
    for (const auto* session : sessions) names.push_back(session->snapshot.projectLabel());
    return names;
}

// A view whose user presses keys.
struct User {
    explicit User(std::vector<SessionSnapshot> sessions)
        : content{viewContent(std::move(sessions))} {}

    Request press(std::u32string_view keys) {
        Request last = Request::nothing;
        for (const Key key : keys) last = press(key);
        return last;
    }
    Request press(Key key) { return host::press(key, state, content, offered, pageHeight); }
    ViewRows rows() const { return ViewRows::of(content, state); }
    Names shown() const { return projects(rows().shown); }
    Names unfolded() const { return projects(rows().unfolded); }
    std::string selected() const {
        const auto index = rows().selectedIndex(state);
        return index ? rows().at(*index).snapshot.projectLabel() : "nothing";
    }
    void see(std::vector<SessionSnapshot> sessions) {
        auto after = viewContent(std::move(sessions));
        keepSelection(state, content, after);
        content = std::move(after);
    }

    ViewContent content;
    ViewState state;
    Offered offered = allActions();
};

User userOfThree() {
    return User{{viewSession("asks", needsAttention), viewSession("broke", failed),
                 viewSession("works", working)}};
}

TEST(ViewRows, showWhatWaitsFirstAndWhatHasChangedLastBeforeTheOthersOfItsRank) {
    const User user{{viewSession("works", working, 5), viewSession("asks", needsAttention, 9),
                     viewSession("began", working, 1), viewSession("broke", failed, 2),
                     viewSession("done", completed, 0)}};
    EXPECT_EQ(user.shown(), (Names{"asks", "broke", "began", "works", "done"}));
}

TEST(ViewRows, leaveASessionInItsPlaceWhileItOnlyGoesOn) {
    User user{{viewSession("one", working, 5), viewSession("two", working, 4)}};
    const auto before = user.shown();
    auto heard = viewSession("one", working, 5);
    heard.lastSeenAt = viewTime;
    user.see({heard, viewSession("two", working, 4)});
    EXPECT_EQ(user.shown(), before);
}

TEST(ViewRows, foldWhatHasEndedUntilTheyAreAskedToShowIt) {
    User user{{endedSession("over"), viewSession("asks", needsAttention)}};
    EXPECT_EQ(user.shown(), Names{"asks"});
    EXPECT_EQ(user.rows().ended, 1U);
    user.press(U"z");
    EXPECT_EQ(user.unfolded(), Names{"over"});
    user.press(U"z");
    EXPECT_EQ(user.unfolded(), Names{});
}

TEST(ViewState, movesTheSelectionAndStaysInTheList) {
    User user = userOfThree();
    EXPECT_EQ(user.selected(), "asks");
    user.press(U"k");
    EXPECT_EQ(user.selected(), "asks");
    user.press(U"j");
    EXPECT_EQ(user.selected(), "broke");
    user.press(U"jjj");
    EXPECT_EQ(user.selected(), "works");
    user.press(U"g");
    EXPECT_EQ(user.selected(), "asks");
    user.press(U"G");
    EXPECT_EQ(user.selected(), "works");
    user.press(Keys::pageUp);
    EXPECT_EQ(user.selected(), "asks");
}

TEST(ViewState, movesByPagesOfTheHeight) {
    std::vector<SessionSnapshot> many;
    for (int i = 10; i < 99; ++i) many.push_back(viewSession(std::to_string(i), working, i));
    User user{many};
    user.press(Keys::pageDown);
    EXPECT_EQ(user.selected(), "14");
    user.press(Keys::pageDown);
    EXPECT_EQ(user.selected(), "18");
    user.press(Keys::pageUp);
    EXPECT_EQ(user.selected(), "14");
}

TEST(ViewState, keepsTheSelectionOnItsSessionWhereverThatGoes) {
    User user = userOfThree();
    user.press(U"j");
    user.see({viewSession("asks", working, 0), viewSession("broke", working, 3),
              viewSession("works", needsAttention)});
    EXPECT_EQ(user.selected(), "broke");
}

TEST(ViewState, selectsWhatStandsInThePlaceOfASessionThatIsGone) {
    User user = userOfThree();
    user.press(U"j");
    user.see({viewSession("asks", needsAttention), viewSession("works", working)});
    EXPECT_EQ(user.selected(), "works");
    user.see({viewSession("asks", needsAttention)});
    EXPECT_EQ(user.selected(), "asks");
}

TEST(ViewState, staysAtTheFirstUntilTheUserHasMoved) {
    User user = userOfThree();
    user.see({viewSession("asks", needsAttention), viewSession("new", needsAttention, 0)});
    EXPECT_EQ(user.selected(), "new");
}

TEST(ViewState, stepsThroughTheSessionsThatWait) {
    User user{{viewSession("one", needsAttention, 1), viewSession("two", needsAttention, 2),
               viewSession("works", working)}};
    user.press(U"nn");
    EXPECT_EQ(user.selected(), "one");
    user.press(Keys::tab);
    EXPECT_EQ(user.selected(), "two");
    user.press(U"Gn");
    EXPECT_EQ(user.selected(), "one");
}

TEST(ViewState, saysThatNoSessionWaits) {
    User user{{viewSession("works", working)}};
    user.press(U"n");
    EXPECT_EQ(user.state.message, "No session waits for you.");
    user.press(U"j");
    EXPECT_EQ(user.state.message, "");
}

TEST(ViewState, asksItsOwnerForWhatItCannotDoItself) {
    User user = userOfThree();
    EXPECT_EQ(user.press(Keys::enter), Request::focus);
    EXPECT_EQ(user.press(U"e"), Request::explain);
    EXPECT_EQ(user.press(U"m"), Request::mute);
    EXPECT_EQ(user.press(U"p"), Request::pause);
    EXPECT_EQ(user.press(Keys::redraw), Request::redraw);
}

TEST(ViewState, asksForNothingOfASessionWhereThereIsNone) {
    User user{{}};
    EXPECT_EQ(user.press(Keys::enter), Request::nothing);
    EXPECT_EQ(user.press(U"edmjkn"), Request::nothing);
    EXPECT_EQ(user.selected(), "nothing");
}

TEST(ViewState, doesNothingThatIsNotOffered) {
    User user = userOfThree();
    user.offered.erase(Action::mute);
    EXPECT_EQ(user.press(U"m"), Request::nothing);
}

TEST(ViewState, quitsOnlyAtTheSecondKeyWhereItIsTheOneThatTells) {
    User user = userOfThree();
    EXPECT_EQ(user.press(U"q"), Request::nothing);
    EXPECT_TRUE(user.state.asksToQuit);
    EXPECT_EQ(user.press(U"j"), Request::nothing);
    EXPECT_EQ(user.selected(), "asks") << "the key that says no does nothing else";
    EXPECT_EQ(user.press(U"q"), Request::nothing);
    EXPECT_EQ(user.press(U"q"), Request::quit);
}

TEST(ViewState, quitsAtOnceWhereAnotherHostTells) {
    User user = userOfThree();
    user.content.host.leads = false;
    EXPECT_EQ(user.press(U"q"), Request::quit);
}

TEST(ViewState, hidesASessionUntilItsStatusChanges) {
    User user = userOfThree();
    user.press(U"jd");
    EXPECT_EQ(user.shown(), (Names{"asks", "works"}));
    EXPECT_EQ(user.selected(), "works");
    EXPECT_EQ(user.rows().dismissed, 1U);
    user.see({viewSession("asks", needsAttention), viewSession("broke", needsAttention, 0),
              viewSession("works", working)});
    EXPECT_EQ(user.shown(), (Names{"broke", "asks", "works"}));
}

TEST(ViewState, showsAHiddenSessionAgainByTheSameKey) {
    User user = userOfThree();
    user.press(U"jdzG");
    EXPECT_EQ(user.selected(), "broke");
    user.press(U"d");
    EXPECT_EQ(user.shown(), (Names{"asks", "broke", "works"}));
}

TEST(ViewState, filtersByWhatIsTyped) {
    User user = userOfThree();
    user.press(U"/BRO");
    EXPECT_EQ(user.shown(), Names{"broke"});
    EXPECT_TRUE(user.state.isTypingFilter);
    user.press(Keys::backspace);
    EXPECT_EQ(user.state.filter, "BR");
    user.press(Keys::enter);
    EXPECT_FALSE(user.state.isTypingFilter);
    EXPECT_EQ(user.shown(), Names{"broke"});
    user.press(Keys::escape);
    EXPECT_EQ(user.shown().size(), 3U);
}

TEST(ViewState, findsSessionsByAllThatIsSeenOfThem) {
    for (const auto& [typed, expected] : std::vector<std::pair<std::u32string, std::string>>{
             {U"permission", "asks"}, {U"bash", "asks"}, {U"id-works", "works"}}) {
        User user = userOfThree();
        user.press(U"/" + typed);
        EXPECT_EQ(user.shown(), Names{expected});
    }
}

TEST(ViewState, takesLettersForTheFilterAndNotForKeysWhileOneIsTyped) {
    User user = userOfThree();
    EXPECT_EQ(user.press(U"/qpz?d"), Request::nothing);
    EXPECT_EQ(user.state.filter, "qpz?d");
    EXPECT_FALSE(user.state.overlay);
    user.press(Keys::escape);
    EXPECT_EQ(user.state.filter, "");
}

TEST(ViewState, closesWhatLiesOverTheListByAnyKeyThatDoesNotScrollIt) {
    User user = userOfThree();
    user.press(U"?");
    ASSERT_TRUE(user.state.overlay);
    user.press(U"jj");
    EXPECT_TRUE(user.state.overlay);
    EXPECT_EQ(user.state.overlayTop, 2U);
    EXPECT_EQ(user.press(U"q"), Request::nothing);
    EXPECT_FALSE(user.state.overlay);
    EXPECT_FALSE(user.state.asksToQuit);
}

}  // namespace
}  // namespace tallowbrook::host
