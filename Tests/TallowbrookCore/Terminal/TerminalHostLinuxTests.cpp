#include <gtest/gtest.h>

#include "Support/PseudoTerminal.h"
#include "Terminal/TerminalHost.h"
#include "Terminal/TerminalLocation.h"
#include "WaitingChild.h"

namespace tallowbrook {
namespace {

// A child at the head of a session on the highest virtual console that nobody uses, and below it
// a process without a terminal. The child reports the console and the id of that process.
std::optional<std::string> takeUnusedConsole() {
    if (setsid() < 0) return std::nullopt;
    for (int number = 63; number > 12; --number) {
        const std::string name = "tty" + std::to_string(number);
        const int attempt = open(("/dev/" + name).c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        if (attempt < 0) continue;
        if (ioctl(attempt, TIOCSCTTY, 0) != 0) {
            close(attempt);
            continue;
        }
        const pid_t detached = fork();
        if (detached == 0) {
            setsid();
            WaitingChild::standStill();
        }
        while (getsid(detached) != detached) usleep(100);
        return name + ' ' + std::to_string(detached);
    }
    return std::nullopt;
}

// A console has a name that `sanitize` keeps, so here every step is asked of the machine itself.
class OnAConsole : public testing::Test {
 protected:
    void SetUp() override {
        if (!child.report) GTEST_SKIP() << "no virtual console may be taken here";
        console = child.report->substr(0, child.report->find(' '));
        detached = std::stoi(child.report->substr(console.size()));
    }

    WaitingChild child{takeUnusedConsole};
    std::string console;
    pid_t detached = 0;
};

TEST_F(OnAConsole, aProcessGivesTheNameOfItsConsole) {
    EXPECT_EQ(ControllingTerminal::deviceName(child.pid, 0), console);
}

TEST_F(OnAConsole, aProcessWithoutATerminalGivesItsParentsConsole) {
    EXPECT_EQ(ControllingTerminal::deviceName(detached, 1), console);
    EXPECT_EQ(ControllingTerminal::deviceName(detached, 0), std::nullopt);
}

TEST_F(OnAConsole, theHostIsTheProcessThatStartedItsFirst) {
    EXPECT_EQ(TerminalHost::processesOnTTY(console),
              (std::vector<TerminalHost::ProcessPair>{{child.pid, getpid()}}));
    const auto chain = TerminalHost::hostChain(console);
    ASSERT_FALSE(chain.empty());
    EXPECT_EQ(chain.front().pid, getpid());
    EXPECT_FALSE(TerminalHost::isTmux(chain));
}

}  // namespace
}  // namespace tallowbrook
