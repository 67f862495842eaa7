// `watch --exec`: a program of the user's is told, and harms nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <csignal>

#include "Support/FileContents.h"
#include "Support/WaitUntil.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;

std::string file(const TestHome& home, const std::string& name) {
    return home.directory.path / name;
}

std::string titleIn(const std::string& json) {
    return std::string{boost::json::parse(json).at("title").as_string()};
}

TEST(Exec, isToldWhatTheUserIsTold) {
    const TestHome home;
    RunningProgram host{home.hostCall({"watch", "--exec", "cat > " + file(home, "heard")})};
    ASSERT_TRUE(host.waitForOutput("No sessions to show."));
    home.claude("PermissionRequest");
    waitUntil([&] { return contentsOf(file(home, "heard")).ends_with('\n'); });
    EXPECT_EQ(titleIn(contentsOf(file(home, "heard"))), "Claude Code needs permission");
    EXPECT_TRUE(host.waitForOutput("Claude Code needs permission: proj"));
}

TEST(Exec, isThePreferencesOneUnlessAnotherIsNamed) {
    const TestHome home;
    EXPECT_EQ(home.host({"preferences", "exec", "cat > " + file(home, "one")}).status, 0);
    {
        RunningProgram host{home.hostCall({"watch"})};
        home.claude("Stop", "S1");
        waitUntil([&] { return contentsOf(file(home, "one")).ends_with('\n'); });
    }
    RunningProgram host{home.hostCall({"watch", "--exec", "cat > " + file(home, "two")})};
    home.claude("Stop", "S2");
    waitUntil([&] { return contentsOf(file(home, "two")).ends_with('\n'); });
    EXPECT_EQ(home.host({"preferences", "exec", "off"}).status, 0);
}

TEST(Exec, thatHangsOrFailsStopsNoLineAndNoHost) {
    for (const char* command : {"sleep 1000", "exit 3", "kill -9 $$", "cat /dev/zero",
                                "/nowhere/at/all", "exec >&- <&-"}) {
        const TestHome home;
        RunningProgram host{home.hostCall({"watch", "--exec", command})};
        ASSERT_TRUE(host.waitForOutput("No sessions to show."));
        for (const char* session : {"S1", "S2"}) {
            home.claude("Stop", session);
            ASSERT_TRUE(host.waitForMoreOutput()) << command;
        }
        host.send(SIGTERM);
        EXPECT_EQ(host.wait().status, 0) << command;
    }
}

TEST(Exec, thatFailsIsSaidOnceAndLogged) {
    const TestHome home;
    RunningProgram host{home.hostCall({"watch", "--exec", "exit 3"})};
    ASSERT_TRUE(host.waitForOutput("No sessions to show."));
    for (const char* session : {"S1", "S2"}) {
        home.claude("Stop", session);
        waitUntil([&, count = home.rows("notifications")] {
            return home.rows(
                       "notifications WHERE number IN (SELECT notification FROM deliveries "
                       "WHERE channel = 'exec' AND state = 'refused')") == count;
        });
    }
    host.send(SIGTERM);
    const auto result = host.wait();
    EXPECT_EQ(result.errors,
              "tallowbrook: The program of the preference exec could not tell you: it ended with "
              "status 3.\n");
    EXPECT_THAT(contentsOf(home.paths.appLogFile()), HasSubstr("it ended with status 3."));
}

TEST(Exec, isRefusedByAHostThatLooksOnce) {
    const TestHome home;
    EXPECT_EQ(home.host({"watch", "--once", "--exec", "true"}),
              (ProgramResult{.status = 2,
                             .errors = "tallowbrook: A host that looks once runs no program "
                                       "(--exec).\n"}));
}

}  // namespace
}  // namespace tallowbrook
