#include "SessionState/WaitingCycle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/SampleSnapshots.h"

namespace tallowbrook {
namespace {

using testing::ElementsAre;

const std::vector<std::string> threeIDs{"a", "b", "c"};

// What a new cycle picks from the same ids at these seconds; "none" where it picks nothing.
std::vector<std::string> picksAt(const std::vector<double>& times,
                                 const std::vector<std::string>& ids = threeIDs) {
    WaitingCycle cycle;
    std::vector<std::string> picks;
    for (const double time : times) picks.push_back(cycle.next(ids, after(time)).value_or("none"));
    return picks;
}

TEST(WaitingCycle, stepsThroughTheListWhileThePauseIsShorterThanTenSeconds) {
    EXPECT_THAT(picksAt({0, 3, 6, 9}), ElementsAre("a", "b", "c", "a"));
    EXPECT_THAT(picksAt({0, 9, 18, 27, 36}), ElementsAre("a", "b", "c", "a", "b"));
    EXPECT_THAT(picksAt({0, 10}), ElementsAre("a", "a"));
    EXPECT_THAT(picksAt({0, 9.999999}), ElementsAre("a", "b"));
    EXPECT_THAT(picksAt({0, 3, 1000, 1003}), ElementsAre("a", "b", "a", "b"));
    EXPECT_THAT(picksAt({0, -3600, -3597}), ElementsAre("a", "b", "c")) << "a clock set back";
    EXPECT_THAT(picksAt({0, 1, 2, 20}, {"a"}), ElementsAre("a", "a", "a", "a"));
    EXPECT_THAT(picksAt({0, 1, 2, 3}, {"a", "b", "a", "c"}), ElementsAre("a", "b", "a", "b"))
        << "the first of equal ids counts";
}

TEST(WaitingCycle, picksNothingFromAnEmptyListAndForgets) {
    WaitingCycle cycle;
    EXPECT_EQ(cycle.next({}, after(0)), std::nullopt);
    cycle.next(threeIDs, after(1));
    cycle.next(threeIDs, after(2));
    EXPECT_EQ(cycle.next({}, after(3)), std::nullopt);
    EXPECT_EQ(cycle.last, std::nullopt);
    EXPECT_EQ(cycle.next(threeIDs, after(4)), "a");
}

TEST(WaitingCycle, followsTheLastPickToItsNewPlace) {
    WaitingCycle cycle;
    cycle.next(threeIDs, after(0));
    EXPECT_EQ(cycle.last, (WaitingCycle::Pick{"a", after(0)}));
    EXPECT_EQ(cycle.next({"b", "c", "a", "d"}, after(1)), "d");
    EXPECT_EQ(cycle.next({"d", "x"}, after(2)), "x");
    EXPECT_EQ(cycle.next({"d", "X", "y"}, after(3)), "d") << "the last pick has left the list";
}

}  // namespace
}  // namespace tallowbrook
