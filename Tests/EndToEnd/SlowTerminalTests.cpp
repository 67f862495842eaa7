// The live view on a terminal that takes little or nothing, and what it writes to it.
#include <SQLiteCpp/Database.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <csignal>

#include "EventBridge/SpoolDrainer.h"
#include "Support/PseudoTerminal.h"
#include "Support/WaitUntil.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;

const std::string frameBegins = "\x1B[?25l";  // each hides the cursor first
const std::string leavesScreen = "\x1B[?1049l";

// `watch` on a terminal that the test reads, or does not.
struct OnTerminal {
    explicit OnTerminal(const TestHome& home) : host{call(home)} {}

    ProgramCall call(const TestHome& home) {
        auto watch = home.hostCall({"watch"});
        watch.environment["TERM"] = "xterm";
        watch.environment["LC_ALL"] = "C.UTF-8";
        watch.prepare = [this] {
            // Becomes the controlling terminal of the child's session.
            const int file = open(terminal.path.c_str(), O_RDWR);
            ioctl(file, TIOCSCTTY, 0);
            for (const int stream : {STDIN_FILENO, STDOUT_FILENO}) dup2(file, stream);
            const winsize size{24, 80, 0, 0};
            ioctl(file, TIOCSWINSZ, &size);
        };
        return watch;
    }

    void waitFor(const std::string& part) {
        waitUntil([&] { return (seen += terminal.read()).contains(part); });
    }

    PseudoTerminal terminal;
    std::string seen;
    RunningProgram host;
};

int storedEvents(const TestHome& home) {
    try {
        return home.rows("events");
    } catch (const SQLite::Exception&) {  // it is being made
        return 0;
    }
}

int count(const std::string& text, const std::string& part) {
    int found = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++found;
    return found;
}

TEST(SlowTerminal, thatTakesNothingStopsNoEvent) {
    const TestHome home;
    OnTerminal view{home};
    view.waitFor("No session waits");
    // Each changes the picture, far beyond what a terminal keeps.
    constexpr int events = 60;
    for (int i = 0; i < events; ++i) home.claude("PermissionRequest", "S" + std::to_string(i));
    waitUntil([&] { return storedEvents(home) == events; });
    EXPECT_EQ(storedEvents(home), events);
    EXPECT_EQ(SpoolDrainer{home.paths}.pendingSegmentCount(), 0);
    view.waitFor("60 sessions wait for you");
    view.host.send(SIGTERM);
    EXPECT_EQ(view.host.wait().status, 0);
}

TEST(SlowTerminal, thatIsHaltedEndsWithItsHostAllTheSame) {
    const TestHome home;
    OnTerminal view{home};
    view.waitFor("No session waits");
    const FileDescriptor screen{open(view.terminal.path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};
    ASSERT_EQ(tcflow(screen.number(), TCOOFF), 0);
    home.claude("PermissionRequest");
    waitUntil([&] { return storedEvents(home) == 1; });
    view.host.send(SIGTERM);
    EXPECT_EQ(view.host.wait().status, 0);
    view.seen += view.terminal.read();
    EXPECT_THAT(view.seen, HasSubstr(leavesScreen));
}

int told(const TestHome& home) {
    return SQLite::Database{home.paths.databaseFile().string(), SQLite::OPEN_READONLY, 5000}
        .execAndGet("SELECT count(*) FROM deliveries WHERE state = 'told'")
        .getInt();
}

TEST(SlowTerminal, countsWhatItShowsAsToldOnceItHasTakenIt) {
    const TestHome home;
    OnTerminal view{home};
    view.waitFor("q quit");
    const FileDescriptor screen{open(view.terminal.path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};
    ASSERT_EQ(tcflow(screen.number(), TCOOFF), 0);
    for (int i = 1; i <= 3; ++i) {
        home.claude("PermissionRequest", "S" + std::to_string(i));
        waitUntil([&] { return storedEvents(home) == i; });
    }
    EXPECT_EQ(told(home), 0);
    ASSERT_EQ(tcflow(screen.number(), TCOON), 0);
    waitUntil([&] { return told(home) == 3; });
    view.host.send(SIGTERM);
    EXPECT_EQ(view.host.wait().status, 0);
}

TEST(SlowTerminal, thatNeverShowedANotificationLeavesItToTheNextHost) {
    const TestHome home;
    OnTerminal view{home};
    view.waitFor("q quit");
    const FileDescriptor screen{open(view.terminal.path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};
    ASSERT_EQ(tcflow(screen.number(), TCOOFF), 0);
    home.claude("PermissionRequest");
    waitUntil([&] { return storedEvents(home) == 1; });
    view.host.send(SIGKILL);
    EXPECT_EQ(view.host.wait().status, -1);
    EXPECT_THAT(home.host({"watch", "--once"}).output,
                HasSubstr("Claude Code needs permission: proj"));
}

TEST(Terminal, isWrittenToOnlyWhereThePictureChanges) {
    const TestHome home;
    home.claude("UserPromptSubmit");
    OnTerminal view{home};
    view.waitFor("1 working");
    view.waitFor("q quit");
    view.seen += view.terminal.read();
    const int before = count(view.seen, frameBegins);
    // The session is heard of again, and nothing that the view shows is otherwise.
    for (int i = 2; i <= 4; ++i) {
        home.claude("PostToolUse");
        waitUntil([&] { return storedEvents(home) == i; });
    }
    home.claude("Stop");
    view.waitFor("completed");
    EXPECT_EQ(count(view.seen, frameBegins), before + 1);
    view.host.send(SIGTERM);
    EXPECT_EQ(view.host.wait().status, 0);
}

TEST(Terminal, isRestoredWhenTheHostIsAskedToEnd) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const TestHome home;
        OnTerminal view{home};
        view.waitFor("q quit");
        view.host.send(signal);
        EXPECT_EQ(view.host.wait().status, 0);
        view.seen += view.terminal.read();
        EXPECT_THAT(view.seen, HasSubstr(leavesScreen));
    }
}

}  // namespace
}  // namespace tallowbrook
