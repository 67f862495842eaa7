#include <gtest/gtest.h>

#include "Support/WaitUntil.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

void drain(const TestHome& home) { EXPECT_EQ(home.host({"watch", "--once"}).status, 0); }

TEST(Wait, isOverAtOnceForASessionThatNeedsItsUserOrIsDone) {
    struct Row {
        const char* event;
        int status;
        const char* said;
    };
    for (const auto& [event, status, said] :
         {Row{"Stop", 0, "proj: completed, <1 min\n"},
          Row{"PermissionRequest", 5, "proj: needs permission (Bash), <1 min\n"},
          Row{"StopFailure", 6, "proj: failed, <1 min\n"}}) {
        const TestHome home;
        home.claude(event, "S1");
        const auto waited = home.host({"wait", "S1"});
        EXPECT_EQ(waited.status, status) << event;
        EXPECT_EQ(waited.output, said) << event;
    }
}

TEST(Wait, endsWithItsTimeout) {
    const TestHome home;
    home.claude("UserPromptSubmit");
    const auto waited = home.host({"wait", "S1", "--timeout", "1"});
    EXPECT_EQ(waited.status, 124);
    EXPECT_EQ(waited.output, "");
    EXPECT_EQ(waited.errors, "tallowbrook: Nothing has happened within 1 s.\n");
}

TEST(Wait, takesInTheSpoolByItselfWhereNoHostRuns) {
    const TestHome home;
    home.claude("UserPromptSubmit");
    RunningProgram waiting{home.hostCall({"wait", "S1", "--timeout", "50"})};
    // It has taken in the prompt, and looks on.
    waitUntil([&] { return exists(home.paths.databaseFile()); });
    home.claude("Stop");
    EXPECT_EQ(waiting.wait().status, 0);
    EXPECT_NE(home.host({"sessions"}).output.find("completed"), std::string::npos);
}

TEST(Wait, seesWhatAHostStores) {
    const TestHome home;
    home.claude("UserPromptSubmit");
    RunningProgram host{home.hostCall({"watch"})};
    EXPECT_TRUE(host.waitForOutput("working"));
    RunningProgram waiting{home.hostCall({"wait", "S1", "--timeout", "50"})};
    home.claude("PermissionRequest");
    EXPECT_EQ(waiting.wait().status, 5);
    host.send(SIGTERM);
    EXPECT_EQ(host.wait().status, 0);
}

TEST(Wait, forAnySessionTakesOnlyNewsForDone) {
    const TestHome home;
    home.claude("Stop", "old");
    home.claude("UserPromptSubmit", "busy");
    drain(home);
    EXPECT_EQ(home.host({"wait", "--timeout", "0"}).status, 124);

    home.claude("PermissionRequest", "busy");
    const auto waited = home.host({"wait", "--timeout", "0"});
    EXPECT_EQ(waited.status, 5);
    EXPECT_NE(waited.output.find("needs permission"), std::string::npos);
}

TEST(Wait, refusesWhatIsNoSessionAndNoTime) {
    const TestHome home;
    home.claude("Stop");
    EXPECT_EQ(home.host({"wait", "nobody"}).status, 2);
    EXPECT_EQ(home.host({"wait", "S1", "--timeout", "soon"}).status, 2);
    const TestHome empty;
    EXPECT_EQ(empty.host({"wait"}).status, 1);
    EXPECT_FALSE(exists(empty.paths.home));
}

}  // namespace
}  // namespace tallowbrook
