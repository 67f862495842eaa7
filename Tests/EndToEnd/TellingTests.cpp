// What a user is told, and reads, of sessions at work.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/WaitUntil.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

TEST(Telling, saysThatASessionEndedInTheMiddleOfATurn) {
    const TestHome home;
    home.claude("UserPromptSubmit");
    home.claude("SessionEnd");
    const auto watched = home.host({"watch", "--once"});
    EXPECT_THAT(watched.output, AllOf(HasSubstr("Claude Code ended without finishing: proj "),
                                      HasSubstr("  1  ended unfinished  Claude Code  proj ")));
    EXPECT_THAT(home.host({"explain", "1"}).output,
                HasSubstr("The session ended without finishing at "));
}

TEST(Telling, saysNothingOfATurnThatTookASecond) {
    const TestHome home;
    home.claude("UserPromptSubmit");
    home.claude("Stop");
    EXPECT_THAT(home.host({"watch", "--once"}).output, Not(HasSubstr("finished")));
    EXPECT_EQ(home.host({"preferences", "completionAfter", "0"}).status, 0);
    home.claude("UserPromptSubmit", "S2");
    home.claude("Stop", "S2");
    EXPECT_THAT(home.host({"watch", "--once"}).output, HasSubstr("finished: proj #2 "));
}

TEST(Telling, callsTwoSessionsOfAProjectTheSameEverywhere) {
    const TestHome home;
    home.claude("SessionStart", "S1");
    home.claude("SessionStart", "S2");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    home.claude("PermissionRequest", "S2");
    EXPECT_THAT(home.host({"watch", "--once"}).output,
                AllOf(HasSubstr("needs permission: proj #2 "),
                      HasSubstr("  1  needs permission  Claude Code  proj #2 "),
                      HasSubstr("  2  unknown           Claude Code  proj #1 ")));
    EXPECT_THAT(home.host({"explain", "1"}).output, HasSubstr("proj #2, Claude Code, since "));
    EXPECT_THAT(home.host({"sessions", "--json"}).output, HasSubstr("\"name\":\"proj #2\""));
}

TEST(Telling, comesBackToWhatAPauseHeldBackAsSoonAsItEnds) {
    const TestHome home;
    EXPECT_EQ(home.host({"preferences", "paused", "on"}).status, 0);
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput("No sessions to show."));
    home.claude("PermissionRequest", "S1");
    home.claude("Stop", "S2");
    waitUntil([&] { return home.rows("events") == 2; });
    EXPECT_EQ(home.host({"preferences", "paused", "off"}).status, 0);
    EXPECT_TRUE(host.waitForOutput("While you were away: 1 waits, 1 finished."));
    EXPECT_THAT(host.output(), Not(HasSubstr("needs permission:")));
}

}  // namespace
}  // namespace tallowbrook
