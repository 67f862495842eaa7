// A session that ends in the middle of a turn.
#include "Lists/SessionList.h"
#include "Lists/UnfinishedEnd.h"
#include "Storing.h"

namespace tallowbrook::host {
namespace {

using UnfinishedEnd = Storing;

const Texts unfinished{
    "Claude Code ended without finishing: proj \xE2\x80\x94 the session ended in the middle of a "
    "turn."};

TEST_F(UnfinishedEnd, isTold) {
    store({prompt(0), sessionEnd(3)});
    EXPECT_EQ(told(), unfinished);
    EXPECT_TRUE(endedWithoutFinishing(session()));
    EXPECT_TRUE(session().sessionEnded);
    EXPECT_EQ(session().endReason, "other");
    EXPECT_EQ(session().endedAt, sampleTime + std::chrono::seconds{3});
}

TEST_F(UnfinishedEnd, isReadInListsAndExplanations) {
    store({prompt(0), sessionEnd(3)});
    const Instant now = sampleTime + std::chrono::minutes{5};
    const auto list = SessionList::make({session()}, ListScope::recent, now);
    EXPECT_NE(list.table(now).find("  1  ended unfinished  "), std::string::npos);
    EXPECT_EQ(explanationText(session(), now, [](Instant) { return "14:05"; }),
              "The session ended without finishing at 14:05 (reason: other). The end of its last "
              "turn was never reported.");
}

TEST_F(UnfinishedEnd, isOneAlsoOfASessionThatWaitsAndThenItsRequestIsNotTold) {
    store({prompt(0), request(2), sessionEnd(4)});
    EXPECT_EQ(told(), unfinished);
}

TEST_F(UnfinishedEnd, isNoneAfterTheEndOfTheTurn) {
    store({prompt(0), stop(30), sessionEnd(31)});
    EXPECT_EQ(told(), Texts{"Claude Code finished: proj \xE2\x80\x94 turn completed."});
    EXPECT_EQ(session().status, SessionStatus::completed);
    EXPECT_FALSE(endedWithoutFinishing(session()));
}

TEST_F(UnfinishedEnd, isNoneOfASessionThatItsUserHasLeft) {
    for (const char* reason : {"prompt_input_exit", "clear", "resume", "logout"}) {
        store({prompt(0), sessionEnd(3, reason)});
        EXPECT_EQ(told(), Texts{}) << reason;
        EXPECT_EQ(session().status, SessionStatus::completed);
        EXPECT_TRUE(session().sessionEnded);
    }
}

TEST_F(UnfinishedEnd, isNoneWhenTheTerminalIsGone) {
    auto began = prompt(0);
    began.tty = "ttypts3";
    auto killed = sessionEnd(3);
    store({began, killed});
    EXPECT_EQ(told(), Texts{}) << "the user has closed it";

    auto again = prompt(10);
    again.tty = "ttypts3";
    killed = sessionEnd(13);
    killed.tty = "ttypts3";
    store({again, killed});
    EXPECT_EQ(told(), unfinished);
}

TEST_F(UnfinishedEnd, isToldOnceWhereTheAgentReportsAFailureToo) {
    store({prompt(0), failure(3), sessionEnd(3.01)});
    EXPECT_EQ(told(), Texts{"Claude Code turn failed: proj \xE2\x80\x94 server_error."});
    EXPECT_FALSE(endedWithoutFinishing(session()));
}

TEST_F(UnfinishedEnd, isToldOnceAndThenExplainedWhereTheFailureComesLast) {
    for (const double failedAt : {3.01, 2.99}) {
        home.execute("DELETE FROM deliveries; DELETE FROM events; DELETE FROM sessions");
        store({prompt(0), sessionEnd(3), failure(failedAt)});
        EXPECT_EQ(told(), unfinished);
        EXPECT_FALSE(endedWithoutFinishing(session()));
        EXPECT_EQ(session().status, SessionStatus::failed);
        EXPECT_EQ(session().statusDetail.errorType, "server_error");
        EXPECT_TRUE(session().sessionEnded);
    }
}

TEST_F(UnfinishedEnd, isOverWithTheNextPrompt) {
    store({prompt(0), sessionEnd(3), prompt(10)});
    EXPECT_EQ(session().status, SessionStatus::working);
    EXPECT_FALSE(session().sessionEnded);
}

TEST_F(UnfinishedEnd, thatComesTwiceIsToldOnce) {
    store({prompt(0), sessionEnd(3), sessionEnd(3.1)});
    EXPECT_EQ(told(), unfinished);
    EXPECT_TRUE(endedWithoutFinishing(session()));
}

}  // namespace
}  // namespace tallowbrook::host
