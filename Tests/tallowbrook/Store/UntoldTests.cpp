// The memory of what the user was not told of.
#include "Store/Untold.h"

#include <gtest/gtest.h>

#include "DatabaseAtHome.h"

namespace tallowbrook::host {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

using Sessions = std::set<std::string>;

struct NotTold : testing::Test {
    DatabaseAtHome home;
    Database database = home.open();
    Outbox outbox{database};

    static Untold untold(std::uint8_t number, UntoldReason reason,
                         const std::string& session = "claudeCode|S1") {
        return {numberedID(number), session, reason, sampleTime + seconds{number}, std::nullopt};
    }
};

TEST_F(NotTold, comesBackAsItWasInTheOrderOfTheDecisions) {
    std::vector<Untold> all;
    for (const auto reason : allCases<UntoldReason>())
        all.push_back(untold(static_cast<std::uint8_t>(10 - all.size()), reason));
    all.back().turn = milliseconds{3700};
    for (const auto& one : all) outbox.noteUntold(one);
    outbox.noteUntold(untold(99, UntoldReason::paused, "claudeCode|S2"));
    EXPECT_EQ(outbox.untold("claudeCode|S1"), all);
    EXPECT_TRUE(outbox.untold("claudeCode|S3").empty());
}

TEST_F(NotTold, passesOverAReasonOfANewerProgram) {
    outbox.noteUntold(untold(1, UntoldReason::paused));
    outbox.noteUntold(untold(2, UntoldReason::folded));
    home.execute("UPDATE untold SET reason = 'bored' WHERE number = 1");
    EXPECT_EQ(outbox.untold("claudeCode|S1"), std::vector<Untold>{untold(2, UntoldReason::folded)});
}

TEST_F(NotTold, isHeldBackByAPauseAndQuietHoursAlone) {
    std::uint8_t number = 0;
    for (const auto reason : allCases<UntoldReason>())
        outbox.noteUntold(untold(++number, reason, std::string{rawValue(reason)}));
    EXPECT_EQ(outbox.heldBack(), (Sessions{"paused", "quietHours"}));
    outbox.letGoOfHeldBack();
    EXPECT_EQ(outbox.heldBack(), Sessions{});
    outbox.noteUntold(untold(20, UntoldReason::paused));
    EXPECT_EQ(outbox.heldBack(), Sessions{"claudeCode|S1"});
    EXPECT_EQ(outbox.untold("paused").size(), 1U) << "what is let go of stays on record";
}

TEST(UntoldReasons, bearTheNamesOfThePolicysSuppressions) {
    for (const auto suppression : allCases<NotificationSuppression>())
        EXPECT_EQ(rawValue(untoldReason(suppression)), rawValue(suppression));
}

TEST(UntoldReasons, areToldInWords) {
    Untold untold;
    Sessions texts;
    for (const auto reason : allCases<UntoldReason>()) {
        untold.reason = reason;
        texts.insert(untold.words());
    }
    EXPECT_EQ(texts.size(), allCases<UntoldReason>().size());
    untold.reason = UntoldReason::shortTurn;
    untold.turn = milliseconds{19999};
    EXPECT_EQ(untold.words(), "the turn took 19 s");
}

}  // namespace
}  // namespace tallowbrook::host
