// What `watch` says before all else.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "SetupHome.h"

namespace tallowbrook {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string greetingOf(const SetupHome& home) {
    RunningProgram host{home.hostCall({"watch"})};
    EXPECT_TRUE(host.waitForOutput("No sessions to show."));
    host.send(SIGTERM);
    return host.wait().output;
}

TEST(WatchGreeting, saysWhatIsWatchedAndSinceWhen) {
    const SetupHome home;
    EXPECT_THAT(greetingOf(home), StartsWith("No agent is set up: run \"tallowbrook setup\""));
    EXPECT_EQ(home.host({"setup", "claude-code", "codex", "--yes"}).status, 0);
    EXPECT_THAT(
        greetingOf(home),
        ContainsRegex("^Watching Claude Code and Codex CLI since [0-9:]+\\. Ctrl-C ends\\.\n"
                      "No sessions to show\\.\n$"));
}

TEST(WatchGreeting, saysThatNothingWillBeTold) {
    const SetupHome home;
    EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
    EXPECT_EQ(home.host({"preferences", "paused", "on"}).status, 0);
    EXPECT_THAT(greetingOf(home), HasSubstr("\nNothing is told, as \"paused\" is on"));
    EXPECT_EQ(home.host({"preferences", "paused", "off"}).status, 0);
    EXPECT_EQ(home.host({"preferences", "notifyOnFailure", "off"}).status, 0);
    EXPECT_THAT(greetingOf(home), HasSubstr("\nNot told: failed turns.\n"));
}

TEST(WatchGreeting, isNotForAScriptThatTakesOnePass) {
    const SetupHome home;
    EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
    EXPECT_EQ(home.host({"watch", "--once"}).output, "No sessions to show.\n");

    const PseudoTerminal terminal;
    ProgramCall call = home.hostCall({"watch", "--once"});
    const FileDescriptor screen{open(terminal.path.c_str(), O_RDWR | O_NOCTTY)};
    call.prepare = [&] { dup2(screen.number(), STDOUT_FILENO); };
    EXPECT_EQ(run(call).status, 0);
    EXPECT_THAT(terminal.read(), StartsWith("Watching Claude Code since "));
}

}  // namespace
}  // namespace tallowbrook
