#include "Channels/TerminalChannel.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <termios.h>

#include <algorithm>
#include <optional>

#include "ChannelLoop.h"
#include "Support/EnvironmentVariable.h"
#include "Support/PseudoTerminal.h"
#include "Support/StandInProgram.h"
#include "Support/TemporaryDirectory.h"
#include "System/FileDescriptor.h"

namespace tallowbrook::host {
namespace {

using testing::HasSubstr;

using Kind = ChannelEvent::Kind;
using Events = std::vector<ChannelEvent>;

const std::string query = "\x1b]99;i=tallowbrook:p=?\x1b\\\x1b[c";
const std::string hasKittys =
    "\x1b]99;i=tallowbrook:p=?;a=report,focus:p=title,body\x1b\\\x1b[?62;c";
const std::string hasNot = "\x1b[?62;4c";
const std::string inOSC99 =
    "\x1b]99;i=tallowbrook.claudeCode+7cS1:d=0:p=title;Claude Code finished\x1b\\"
    "\x1b]99;i=tallowbrook.claudeCode+7cS1:d=1:p=body:s=silent;proj\x1b\\";
const std::string inOSC777 = "\x1b]777;notify;Claude Code finished;proj\x1b\\";
const std::string asTitle = "\x1b]2;Claude Code finished: proj\x1b\\";
const std::string keepTitle = "\x1b[22;2t";
const std::string putTitleBack = "\x1b[23;2t";

// A terminal of the test's, and the environment of a program on it.
struct OnTerminal : testing::Test {
    PseudoTerminal terminal;
    FileDescriptor device{open(terminal.path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};
    TemporaryDirectory programs;
    bool isInForeground = true;
    std::string written;
    Channel channel = none();

    EnvironmentVariable path{"PATH", programs.path.string() + ":/usr/bin:/bin"};
    std::optional<EnvironmentVariable> term;
    EnvironmentVariable program{"TERM_PROGRAM", std::nullopt};
    EnvironmentVariable answering{"LC_TERMINAL", std::nullopt};
    EnvironmentVariable kitty{"KITTY_WINDOW_ID", std::nullopt};
    EnvironmentVariable screen{"STY", std::nullopt};
    EnvironmentVariable tmux{"TMUX", std::nullopt};
    EnvironmentVariable pane{"TMUX_PANE", std::nullopt};

    static Channel none() {
        return {.name = {}, .state = {}, .begin = {}, .withdraw = {}, .takeEvents = {}};
    }

    void makeChannel(const std::string& name) {
        ASSERT_FALSE(terminal.path.empty());
        term.emplace("TERM", name);
        channel = makeTerminalChannel({.devicePath = terminal.path,
                                       .isInForeground = [this](int) { return isInForeground; }});
    }

    void begin(std::int64_t number = 1, const std::string& session = "claudeCode|S1") const {
        channel.begin({number,
                       {.kind = NotificationKind::completion,
                        .title = "Claude Code finished",
                        .body = "proj",
                        .sessionStorageID = session,
                        .eventID = {},
                        .dedupeKey = {},
                        .playSound = false}});
    }

    // Until the terminal has got so much.
    void expectWritten(const std::string& text) {
        loopUntil(channel, [&] { return (written += terminal.read()).size() >= text.size(); });
        EXPECT_EQ(written, text);
        written.clear();
    }

    Events next() const { return eventsOf(channel, 1); }

    termios modes() const {
        termios modes{};
        EXPECT_EQ(tcgetattr(device.number(), &modes), 0);
        return modes;
    }

    bool echoes() const { return (modes().c_lflag & ECHO) != 0; }
};

TEST_F(OnTerminal, tellsInKittysWayWhereTheTerminalAnswersSo) {
    makeChannel("xterm-256color");
    begin();
    expectWritten(query);
    EXPECT_FALSE(echoes());
    EXPECT_TRUE(terminal.type(hasKittys));
    EXPECT_EQ(next(), (Events{{Kind::handedOver, 1}}));
    expectWritten(inOSC99);
    EXPECT_TRUE(echoes());

    begin(2);
    EXPECT_EQ(next(), (Events{{Kind::handedOver, 2}}));
    expectWritten(inOSC99);
    channel.withdraw("claudeCode|S1");
    expectWritten("\x1b]99;i=tallowbrook.claudeCode+7cS1:p=close;\x1b\\");
}

TEST_F(OnTerminal, tellsInTheWayOfATerminalThatItKnows) {
    makeChannel("foot");
    begin();
    expectWritten(query);
    EXPECT_TRUE(terminal.type(hasNot));
    EXPECT_EQ(next(), (Events{{Kind::handedOver, 1}}));
    expectWritten(inOSC777);
    EXPECT_TRUE(echoes());
}

TEST_F(OnTerminal, setsTheTitleOfAnUnknownTerminalAndPutsTheUsersBack) {
    makeChannel("xterm-256color");
    begin();
    expectWritten(query);
    EXPECT_TRUE(terminal.type("keys of the user" + hasNot));
    EXPECT_EQ(next(), (Events{{Kind::handedOver, 1}}));
    expectWritten(keepTitle + asTitle);
    begin(2, "claudeCode|S2");
    expectWritten(asTitle);
    channel.withdraw("claudeCode|S1");
    channel.withdraw("claudeCode|S2");
    expectWritten(putTitleBack);
    begin(3);
    expectWritten(keepTitle + asTitle);
    channel = none();
    EXPECT_EQ(terminal.read(), putTitleBack);
}

TEST_F(OnTerminal, waitsNoLongerForATerminalThatDoesNotAnswer) {
    makeChannel("xterm-256color");
    begin();
    EXPECT_EQ(next(), (Events{{Kind::handedOver, 1}}));
    expectWritten(query + keepTitle + asTitle);
    EXPECT_TRUE(echoes());
}

TEST_F(OnTerminal, leavesTheTerminalsModesAsTheyWereWhenItEndsInBetween) {
    makeChannel("xterm-256color");
    const auto before = modes();
    begin();
    expectWritten(query);
    channel = none();
    const auto after = modes();
    EXPECT_EQ(after.c_lflag, before.c_lflag);
    EXPECT_TRUE(std::ranges::equal(after.c_cc, before.c_cc));
}

TEST_F(OnTerminal, asksNoTerminalThatMightPrintTheQuestion) {
    makeChannel("dumb");
    begin();
    EXPECT_EQ(next(), (Events{{Kind::handedOver, 1}}));
    EXPECT_EQ(terminal.read(), "");
}

TEST_F(OnTerminal, tellsLaterWhatAStoppedTerminalDoesNotTake) {
    makeChannel("tmux-256color");
    ASSERT_EQ(tcflow(device.number(), TCOOFF), 0);
    begin();
    begin(2);
    EXPECT_TRUE(channel.takeEvents().empty());
    ASSERT_EQ(tcflow(device.number(), TCOON), 0);
    EXPECT_EQ(eventsOf(channel, 2), (Events{{Kind::handedOver, 1}, {Kind::handedOver, 2}}));
    EXPECT_EQ(terminal.read(), keepTitle + asTitle + asTitle);
}

TEST_F(OnTerminal, writesNothingFromItsBackground) {
    makeChannel("tmux-256color");
    isInForeground = false;
    EXPECT_FALSE(channel.state().isUsable);
    begin();
    EXPECT_EQ(channel.takeEvents(), (Events{{Kind::failed, 1}}));
    EXPECT_EQ(terminal.read(), "");
}

TEST_F(OnTerminal, isNotUsableWithoutATerminal) {
    const auto without =
        makeTerminalChannel({.devicePath = {}, .isInForeground = [](int) { return true; }});
    EXPECT_FALSE(without.state().isUsable);
    EXPECT_EQ(without.state().reason, "the host runs on no terminal");
}

struct InTmux : OnTerminal {
    EnvironmentVariable server{"TMUX", "/tmp/tmux-0/default,1,0"};
    EnvironmentVariable ownPane{"TMUX_PANE", "%3"};

    void makeTmux(const std::string& script) const {
        makeStandIn(programs.path / "tmux", "echo \"$*\" > \"$0.asked\"; " + script);
    }
};

TEST_F(InTmux, goesThroughItToATerminalThatItKnows) {
    makeTmux("printf '1 1 1\\nxterm-256color \\nfoot foot(1.16.2)\\n'");
    makeChannel("tmux-256color");
    begin();
    EXPECT_EQ(next(), (Events{{Kind::handedOver, 1}}));
    expectWritten("\x1bPtmux;\x1b\x1b]777;notify;Claude Code finished;proj\x1b\x1b\\\x1b\\");
    EXPECT_THAT(contentsOf(programs.path / "tmux.asked"), HasSubstr("-t %3 "));
}

TEST_F(InTmux, setsTheTitleWhereNothingComesThrough) {
    for (const char* answer : {"0 1 1\\nfoot \\n", "1 0 1\\nfoot \\n", "1 1 0\\nfoot \\n",
                               "1 1 1\\nxterm \\n", "1 1 1\\n"}) {
        makeTmux(std::string{"printf '"} + answer + "'");
        makeChannel("tmux-256color");
        begin();
        EXPECT_EQ(next(), (Events{{Kind::handedOver, 1}}));
        expectWritten(keepTitle + asTitle);
        channel = none();
        terminal.read();
    }
}

TEST_F(InTmux, setsTheTitleWhereTmuxIsMissingFailsOrHangs) {
    for (const char* script : {"exit 1", "exec sleep 1000", "kill -9 $$", "exec yes"}) {
        makeTmux(script);
        makeChannel("tmux-256color");
        begin();
        EXPECT_EQ(next(), (Events{{Kind::handedOver, 1}})) << script;
        expectWritten(keepTitle + asTitle);
        channel = none();
        terminal.read();
    }
    const EnvironmentVariable empty{"PATH", programs.path / "nowhere"};
    makeChannel("tmux-256color");
    begin();
    EXPECT_EQ(next(), (Events{{Kind::handedOver, 1}}));
}

}  // namespace
}  // namespace tallowbrook::host
