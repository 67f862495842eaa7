// What a session has left behind is not told after it.
#include "Watch/OpenNotifications.h"

#include "Storing.h"

namespace tallowbrook::host {
namespace {

using LeftBehind = Storing;

const std::string asks = "Claude Code needs permission: proj \xE2\x80\x94 waiting for approval.";
const std::string finished = "Claude Code finished: proj \xE2\x80\x94 turn completed.";
const std::string failed = "Claude Code turn failed: proj \xE2\x80\x94 server_error.";
const std::string folded = "it was over before it could be told";

TEST_F(LeftBehind, isARequestThatWasAnswered) {
    store({request(0), activity(2)});
    EXPECT_EQ(told(), Texts{});
    EXPECT_EQ(untold(), Texts{folded});
}

TEST_F(LeftBehind, isTheFirstOfTwoRequestsWhenItWasAnsweredBetween) {
    store({request(0), activity(2), request(4)});
    EXPECT_EQ(told(), Texts{asks});
    EXPECT_EQ(untold(), Texts{folded});
}

TEST_F(LeftBehind, isATurnThatAnotherHasFollowed) {
    store({stop(0), request(10)});
    EXPECT_EQ(told(), Texts{asks});
}

TEST_F(LeftBehind, isWhatAnEarlierBatchHasLeftInTheOutbox) {
    store({request(0)});
    store({activity(2), stop(4)});
    EXPECT_EQ(told(), Texts{finished});
    EXPECT_EQ(untold(), Texts{folded});
}

TEST_F(LeftBehind, isNoFailure) {
    store({failure(0), prompt(5), stop(40)});
    EXPECT_EQ(told(), (Texts{failed, finished}));
}

TEST_F(LeftBehind, isNoRequestWhileAnotherOneIsOpen) {
    preferences.dedupeInterval = Seconds{0};
    auto question = request(0);
    question.detail.toolName = "AskUserQuestion";
    auto permission = request(2);
    permission.detail.toolName = "Bash";
    store({question, permission});
    EXPECT_EQ(told().size(), 2U);
    EXPECT_EQ(untold(), Texts{});
}

TEST_F(LeftBehind, isNothingOfAnotherSession) {
    store({request(0, "S2"), request(1), activity(2)});
    EXPECT_EQ(told().size(), 1U);
}

TEST_F(LeftBehind, isNothingThatAnotherChannelHasToldOrBegun) {
    Outbox outbox{database};
    auto content = numberedContent(9);
    content.kind = NotificationKind::attention;
    const auto number = outbox.add(content, sampleTime, sampleTime, {"desktop", "lines"});
    outbox.markTold(number, "desktop", sampleTime);
    store({request(0), activity(2)});
    EXPECT_EQ(told(), Texts{}) << "the other channel does not tell it late";
    EXPECT_EQ(untold(), Texts{folded}) << "of the request that was never told";
}

}  // namespace
}  // namespace tallowbrook::host
