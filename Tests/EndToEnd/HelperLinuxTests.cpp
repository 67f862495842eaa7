#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "EventBridge/SpoolSignal.h"
#include "Support/EnvironmentVariable.h"
#include "Support/FileContents.h"
#include "Terminal/TerminalLocation.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

// Makes the terminal the controlling one of the calling process, which leads its session, and goes
// on in a child of it with a session of its own: as an agent does for its hooks.
void becomeHookOnTerminal(const std::string& terminal) {
    const int file = open(terminal.c_str(), O_RDWR);
    if (file < 0 || ioctl(file, TIOCSCTTY, 0) != 0) _exit(125);
    const pid_t child = fork();
    if (child == 0) {
        close(file);
        setsid();
        return;
    }
    // What stays open here is open for as long as the helper lives: its input would see no end.
    close_range(STDERR_FILENO + 1, ~0U, 0);
    int status = 0;
    waitpid(child, &status, 0);
    _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 126);
}

TEST(HelperOnLinux, aPseudoTerminalHasNoNameThatIsKept) {
    const TestHome home;
    const FileDescriptor primary{posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)};
    ASSERT_TRUE(primary.isOpen());
    ASSERT_EQ(grantpt(primary.number()), 0);
    ASSERT_EQ(unlockpt(primary.number()), 0);
    const std::string terminal = ptsname(primary.number());

    ProgramCall call = home.hookCall({"claude-code"}, claudePayload("Stop"));
    call.prepare = [&] { becomeHookOnTerminal(terminal); };
    EXPECT_EQ(run(call), quiet);
    const auto events = home.spooled();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].tty, std::nullopt);
}

TEST(HelperOnLinux, withoutATerminalTakesThatOfWhoStartedIt) {
    const TestHome home;
    home.claude("Stop");
    const auto events = home.spooled();
    ASSERT_EQ(events.size(), 1U);
    // The test is the first ancestor. On a console it has a terminal with an acceptable name.
    EXPECT_EQ(events[0].tty,
              ControllingTerminal::deviceName(getpid(), ControllingTerminal::maxAncestors - 1));
}

// Elsewhere a signal reaches every observer of the user, other tests too.
TEST(HelperOnLinux, onlyARecordedEventIsAnnounced) {
    const TestHome home;
    const EnvironmentVariable runtime{"XDG_RUNTIME_DIR", home.environment.at("XDG_RUNTIME_DIR")};
    auto observer = SpoolSignal::Observer::start();
    ASSERT_TRUE(observer);

    EXPECT_EQ(home.hook({"claude-code"}, "{"), quiet);
    EXPECT_EQ(home.hook({"Codex"}), quiet);
    EXPECT_EQ(home.hook({"codex-notify"}), quiet);
    EXPECT_EQ(run(home.plainHookCall({"--version"})).status, 0);
    EXPECT_FALSE(observer->consume());

    home.claude("Stop");
    EXPECT_TRUE(observer->consume());
    home.claude("Stop");
    EXPECT_TRUE(observer->consume());

    remove_all(home.paths.spoolDirectory());
    writeContents(home.paths.spoolDirectory(), "");
    EXPECT_EQ(home.hook({"claude-code"}, claudePayload("Stop")), quiet);
    EXPECT_FALSE(observer->consume());
}

TEST(HelperOnLinux, withoutMemoryIsAnUnexpectedError) {
    // Enough to start with, not enough for a payload of the largest size.
    const auto limitMemory = [] {
        const rlimit limit{768 * 1024, 768 * 1024};
        setrlimit(RLIMIT_DATA, &limit);
    };
    const TestHome home;
    ProgramCall start = home.plainHookCall({"--version"});
    start.prepare = limitMemory;
    if (run(start) != run(home.plainHookCall({"--version"})))
        GTEST_SKIP() << "this build of the helper does not even start with so little memory";

    ProgramCall call = home.hookCall({"claude-code"}, claudePayload("Stop"));
    call.prepare = limitMemory;
    EXPECT_EQ(run(call).status, 0);
    EXPECT_EQ(home.logged(),
              std::vector<std::string>{"helper: claude-code unexpected error: bad_alloc"});
}

}  // namespace
}  // namespace tallowbrook
