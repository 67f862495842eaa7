// `watch` on a terminal: what it writes there, byte for byte, and how it leaves it.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <csignal>

#include "Support/PseudoTerminal.h"
#include "Support/WaitUntil.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;

const std::string query = "\x1b]99;i=tallowbrook:p=?\x1b\\\x1b[c";

struct OnTerminal : testing::Test {
    TestHome home;
    PseudoTerminal terminal;
    FileDescriptor device{open(terminal.path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};
    std::string written;

    void SetUp() override {
        for (const char* name : {"TMUX", "TMUX_PANE", "STY", "TERM_PROGRAM", "LC_TERMINAL",
                                 "KITTY_WINDOW_ID", "DBUS_SESSION_BUS_ADDRESS"})
            home.environment[name] = std::nullopt;
        home.environment["TERM"] = "xterm-256color";
        EXPECT_EQ(home.host({"preferences", "channels", "terminal"}).status, 0);
    }

    // With the terminal as its own.
    ProgramCall watchCall() const {
        auto call = home.hostCall({"watch", "--plain"});
        call.prepare = [path = terminal.path] {
            const int file = open(path.c_str(), O_RDWR);
            ioctl(file, TIOCSCTTY, 0);
            for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
                dup2(file, stream);
        };
        return call;
    }

    void awaitWritten(const std::string& text) {
        waitUntil([&] { return (written += terminal.read()).contains(text); });
        EXPECT_THAT(written, HasSubstr(text));
    }

    tcflag_t modes() const {
        termios modes{};
        EXPECT_EQ(tcgetattr(device.number(), &modes), 0);
        return modes.c_lflag;
    }
};

TEST_F(OnTerminal, tellsByTheTerminalsOwnNotifications) {
    RunningProgram host{watchCall()};
    awaitWritten("No sessions to show.");
    const auto before = modes();
    home.claude("PermissionRequest");
    awaitWritten(query);
    EXPECT_TRUE(terminal.type("\x1b]99;i=tallowbrook:p=?;a=focus:p=title,body\x1b\\\x1b[?62c"));
    awaitWritten(
        "\x1b]99;i=tallowbrook.claudeCode+7cS1:d=0:p=title;Claude Code needs permission\x1b\\"
        "\x1b]99;i=tallowbrook.claudeCode+7cS1:d=1:p=body;proj — waiting for approval to use "
        "Bash.\x1b\\");
    EXPECT_EQ(modes(), before);
    host.send(SIGTERM);
    EXPECT_EQ(host.wait().status, 0);
}

TEST_F(OnTerminal, leavesTheTerminalAsItWasWhateverEndsTheQuestion) {
    const auto before = modes();
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        RunningProgram host{watchCall()};
        home.claude("PermissionRequest", "S" + std::to_string(signal));
        awaitWritten(query);
        host.send(signal);
        EXPECT_EQ(host.wait().status, 0);
        EXPECT_EQ(modes(), before) << signal;
        written.clear();
    }
}

TEST_F(OnTerminal, showsTheNotificationAsTheTitleOfAnUnknownTerminal) {
    RunningProgram host{watchCall()};
    home.claude("PermissionRequest");
    awaitWritten(query);
    EXPECT_TRUE(terminal.type("\x1b[?1;2c"));
    awaitWritten(
        "\x1b[22;2t\x1b]2;Claude Code needs permission: proj — waiting for approval to "
        "use Bash.\x1b\\\a");
    host.send(SIGTERM);
    EXPECT_EQ(host.wait().status, 0);
    awaitWritten("\x1b[23;2t");
}

}  // namespace
}  // namespace tallowbrook
