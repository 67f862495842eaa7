// `watch` that stays: what wakes it, what ends it, and what a second one does.
#include <gtest/gtest.h>

#include <csignal>
#include <memory>

#include "EventBridge/SpoolDrainer.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

const std::string leads = "No sessions to show.";
const std::string follows =
    "tallowbrook: Another host watches this home already. This one only shows what that one "
    "stores.\n";
const std::string takesOver = "tallowbrook: The other host has ended; this one takes over.\n";

const std::string permission = "Claude Code needs permission: proj";
const std::string finished = "Claude Code finished: proj";

int count(const std::string& text, const std::string& part) {
    int found = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++found;
    return found;
}

TEST(WatchStay, tellsWhatHelpersReportAsItComes) {
    const TestHome home;
    home.claude("PermissionRequest", "before");
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput("before"));
    ASSERT_TRUE(host.waitForOutput(permission));
    EXPECT_EQ(count(host.output(), permission), 1);

    for (int i = 1; i <= 5; ++i) {
        home.claude("Stop", "S" + std::to_string(i));
        const auto hasToldAll = [&] { return count(host.output(), finished) == i; };
        while (!hasToldAll() && host.waitForMoreOutput()) continue;
        EXPECT_EQ(count(host.output(), finished), i);
    }
    host.send(SIGINT);
    const ProgramResult result = host.wait();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(home.rows("events"), 6);
    EXPECT_EQ(SpoolDrainer{home.paths}.pendingSegmentCount(), 0);
}

TEST(WatchStay, losesNothingWhileManyHelpersWrite) {
    const TestHome home;
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput(leads));
    constexpr int sessions = 32;
    std::vector<std::unique_ptr<RunningProgram>> helpers;
    for (int i = 0; i < sessions; ++i)
        helpers.push_back(std::make_unique<RunningProgram>(
            home.hookCall({"claude-code"}, claudePayload("Stop", "S" + std::to_string(i)))));
    for (const auto& helper : helpers) EXPECT_EQ(helper->wait(), quiet);

    while (count(host.output(), finished) < sessions && host.waitForMoreOutput()) continue;
    host.send(SIGTERM);
    const ProgramResult result = host.wait();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(count(result.output, finished), sessions);
    EXPECT_EQ(home.rows("events"), sessions);
    EXPECT_EQ(home.logged(), std::vector<std::string>{});
}

TEST(WatchStay, endsWellWhenItIsAskedTo) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const TestHome home;
        RunningProgram host{home.hostCall({"watch"})};
        ASSERT_TRUE(host.waitForOutput(leads));
        host.send(signal);
        const ProgramResult result = host.wait();
        EXPECT_EQ(result.status, 0) << signal;
        EXPECT_EQ(result.errors, "") << signal;
        EXPECT_EQ(result.output.substr(result.output.find('\n') + 1), leads + "\n") << signal;
    }
}

TEST(WatchStay, aSecondOneShowsWhatTheFirstTells) {
    const TestHome home;
    RunningProgram first{home.hostCall({"watch"})};
    ASSERT_TRUE(first.waitForOutput(leads));
    RunningProgram second{home.hostCall({"watch"})};
    ASSERT_TRUE(second.waitForErrors(follows));
    ASSERT_TRUE(second.waitForOutput(leads));

    home.claude("PermissionRequest");
    EXPECT_TRUE(first.waitForOutput(permission));
    EXPECT_TRUE(second.waitForOutput(permission));

    for (RunningProgram* host : {&second, &first}) {
        host->send(SIGTERM);
        const ProgramResult result = host->wait();
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(count(result.output, permission), 1);
    }
    EXPECT_EQ(home.rows("notifications"), 1);
}

TEST(WatchStay, aSecondOneTakesOverWhenTheFirstIsKilled) {
    const TestHome home;
    RunningProgram first{home.hostCall({"watch"})};
    ASSERT_TRUE(first.waitForOutput(leads));
    RunningProgram second{home.hostCall({"watch"})};
    ASSERT_TRUE(second.waitForOutput(leads));
    home.claude("PermissionRequest");
    ASSERT_TRUE(second.waitForOutput(permission));

    first.send(SIGKILL);
    EXPECT_EQ(first.wait().status, -1);
    EXPECT_TRUE(second.waitForErrors(takesOver));
    home.claude("Stop");
    EXPECT_TRUE(second.waitForOutput(finished));

    second.send(SIGTERM);
    const ProgramResult result = second.wait();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, follows + takesOver);
    EXPECT_EQ(count(result.output, permission), 1);
    EXPECT_EQ(count(result.output, finished), 1);
    EXPECT_EQ(home.rows("events"), 2);
}

TEST(WatchStay, aSecondOneShowsAlsoWhatTheFirstToldJustBeforeItsEnd) {
    const TestHome home;
    RunningProgram first{home.hostCall({"watch"})};
    ASSERT_TRUE(first.waitForOutput(leads));
    RunningProgram second{home.hostCall({"watch"})};
    ASSERT_TRUE(second.waitForOutput(leads));

    // Asleep, as it is for most of the time, while the first one tells and ends.
    second.send(SIGSTOP);
    home.claude("PermissionRequest");
    ASSERT_TRUE(first.waitForOutput(permission));
    first.send(SIGTERM);
    EXPECT_EQ(first.wait().status, 0);
    second.send(SIGCONT);

    ASSERT_TRUE(second.waitForErrors(takesOver));
    home.claude("Stop");
    EXPECT_TRUE(second.waitForOutput(finished));
    EXPECT_EQ(count(second.output(), permission), 1);
}

TEST(WatchStay, oneThatOnlyLooksOnceLeavesTheSpoolToTheOther) {
    const TestHome home;
    RunningProgram first{home.hostCall({"watch"})};
    ASSERT_TRUE(first.waitForOutput(leads));
    // Standing still, so that it is seen who drains.
    first.send(SIGSTOP);
    home.claude("Stop");
    EXPECT_EQ(home.host({"watch", "--once"}),
              (ProgramResult{.status = 0, .output = leads + "\n", .errors = follows}));
    EXPECT_EQ(home.spooled().size(), 1U);
    first.send(SIGCONT);
    EXPECT_TRUE(first.waitForOutput(finished));
}

TEST(WatchStay, whatAKilledHostLeftIsToldByTheNext) {
    const TestHome home;
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput(leads));
    host.send(SIGSTOP);
    home.claude("PermissionRequest");
    host.send(SIGKILL);
    EXPECT_EQ(host.wait().status, -1);

    const ProgramResult next = home.host({"watch", "--once"});
    EXPECT_EQ(next.status, 0);
    EXPECT_EQ(next.errors, "");
    EXPECT_EQ(count(next.output, permission), 1);
}

// The complaints of a host that meets these segments with every pass while it tells of others.
std::string complaintsOf(const std::vector<std::string>& unreadableSegments) {
    const TestHome home;
    for (const auto& name : unreadableSegments)
        create_directories(home.paths.spoolDirectory() / name);
    RunningProgram host{home.hostCall({"watch"})};
    EXPECT_TRUE(host.waitForOutput(leads));
    for (int i = 1; i <= 3; ++i) {
        home.claude("Stop", "S" + std::to_string(i));
        while (count(host.output(), finished) < i && host.waitForMoreOutput()) continue;
    }
    host.send(SIGTERM);
    const ProgramResult result = host.wait();
    EXPECT_EQ(result.status, 0);
    return result.errors;
}

TEST(WatchStay, aTroubleThatStaysIsSaidOnce) {
    const std::string complaints = complaintsOf({"ingest-1-1-A.jsonl"});
    EXPECT_EQ(count(complaints, "ingest-1-1-A.jsonl"), 1) << complaints;
}

TEST(WatchStay, eachOfTwoTroublesThatStayIsSaidOnce) {
    const std::string complaints = complaintsOf({"ingest-1-1-A.jsonl", "ingest-2-1-B.jsonl"});
    EXPECT_EQ(count(complaints, "ingest-1-1-A.jsonl"), 1) << complaints;
    EXPECT_EQ(count(complaints, "ingest-2-1-B.jsonl"), 1) << complaints;
}

}  // namespace
}  // namespace tallowbrook
