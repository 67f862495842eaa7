// "Finished" is told of a turn that took a while.
#include "Storing.h"

namespace tallowbrook::host {
namespace {

using TurnLength = Storing;

const Texts finished{"Claude Code finished: proj \xE2\x80\x94 turn completed."};

TEST_F(TurnLength, ofLessThanTheUserWaitsForIsNotTold) {
    store({prompt(0), stop(3.7)});
    EXPECT_EQ(told(), Texts{});
    EXPECT_EQ(untold(), Texts{"the turn took 3 s"});
    EXPECT_EQ(session().status, SessionStatus::completed);
}

TEST_F(TurnLength, isCountedFromThePromptToTheStop) {
    store({prompt(0), stop(20)});
    EXPECT_EQ(told(), finished);
}

TEST_F(TurnLength, isKeptFromBatchToBatch) {
    store({prompt(0)});
    store({activity(10)});
    store({stop(19)});
    EXPECT_EQ(told(), Texts{});
    store({prompt(40)});
    store({stop(61)});
    EXPECT_EQ(told(), finished);
}

TEST_F(TurnLength, hasTheTimeInItThatTheUserTookToAnswer) {
    store({prompt(0), request(5), activity(18), stop(21)});
    EXPECT_EQ(told(), finished);
}

TEST_F(TurnLength, thatIsUnknownIsTold) {
    store({stop(3)});
    EXPECT_EQ(told(), finished);
    store({prompt(30), stop(31), event("PostToolUse", EventCategory::activity, 32)});
    EXPECT_EQ(untold(),
              (Texts{"it was over before it could be told", "the turn took 1 s"}));
}

TEST_F(TurnLength, beginsAnewWithAPromptAfterATurnWhoseEndWasNeverReported) {
    store({prompt(0), prompt(60), stop(63)});
    EXPECT_EQ(untold(), Texts{"the turn took 3 s"});
}

TEST_F(TurnLength, mattersForNothingThatWentWrongOrWaits) {
    store({prompt(0), request(1)});
    EXPECT_EQ(told().size(), 1U);
    store({failure(3)});
    EXPECT_EQ(told(), Texts{"Claude Code turn failed: proj \xE2\x80\x94 server_error."});
}

TEST_F(TurnLength, ofAShortTurnIsNothingThatAPauseHoldsBack) {
    preferences.paused = true;
    store({prompt(0), stop(3), prompt(30), stop(60)});
    EXPECT_EQ(untold(), (Texts{"the turn took 3 s", "notifications were paused"}));
    preferences.paused = false;
    preferences.enabled = false;
    store({prompt(70), stop(73)});
    EXPECT_EQ(untold().back(), "notifications are switched off");
}

}  // namespace
}  // namespace tallowbrook::host
