// A terminal is taken over and given back, whatever ends the process that took it.
#include "View/OpenTerminal.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/resource.h>

#include <array>
#include <csignal>
#include <stdexcept>

#include "Support/ChildProcess.h"
#include "Support/PseudoTerminal.h"

namespace tallowbrook::host {
namespace {

using testing::HasSubstr;
using testing::Not;

const std::string entering = "<enter>";
const std::string leaving = "<leave>";

// What a program on the terminal has in its place: standard streams, a session of its own.
std::string onTerminal(const PseudoTerminal& terminal, const std::function<std::string()>& body) {
    if (!takeTerminal(terminal.path)) return "cannot take the terminal";
    const int file = ::open(terminal.path.c_str(), O_RDWR);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO}) dup2(file, stream);
    // A signal that dumps memory must not leave a file behind.
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    return body();
}

struct TerminalOfTest {
    PseudoTerminal terminal;
    FileDescriptor keptOpen{::open(terminal.path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};

    std::optional<std::string> run(const std::function<std::string()>& body) const {
        return inChildProcess([&] { return onTerminal(terminal, body); });
    }
    termios modes() const {
        termios now{};
        tcgetattr(keptOpen.number(), &now);
        return now;
    }
};

bool showsKeysAsTheyAreTyped(const termios& modes) {
    return (modes.c_lflag & ECHO) != 0 && (modes.c_lflag & ICANON) != 0;
}

TEST(OpenTerminal, takesKeysOneByOneUnseenAndGivesTheModesBack) {
    const TerminalOfTest test;
    ASSERT_TRUE(showsKeysAsTheyAreTyped(test.modes()));
    const auto report = test.run([&] {
        auto terminal = OpenTerminal::open();
        if (!terminal) return terminal.error().text();
        terminal->enter(entering, leaving);
        const bool takesAll = showsKeysAsTheyAreTyped(test.modes());
        terminal->leave();
        return std::string{takesAll ? "as before" : "changed"} +
               (showsKeysAsTheyAreTyped(test.modes()) ? ", restored" : ", left changed");
    });
    EXPECT_EQ(report, "changed, restored");
    EXPECT_THAT(test.terminal.read(), HasSubstr(entering + leaving));
}

TEST(OpenTerminal, isRestoredWhateverSignalEndsTheProcess) {
    for (const int signal : {SIGABRT, SIGSEGV, SIGQUIT, SIGUSR1, SIGALRM}) {
        const TerminalOfTest test;
        const auto report = test.run([&]() -> std::string {
            auto terminal = OpenTerminal::open();
            terminal->enter(entering, leaving);
            raise(signal);
            return "still alive";
        });
        EXPECT_EQ(report, std::nullopt) << signal;
        EXPECT_TRUE(showsKeysAsTheyAreTyped(test.modes())) << signal;
        EXPECT_THAT(test.terminal.read(), HasSubstr(leaving)) << signal;
    }
}

TEST(OpenTerminal, isRestoredByAnExceptionThatNobodyCatches) {
    const TerminalOfTest test;
    const auto report = test.run([&]() -> std::string {
        auto terminal = OpenTerminal::open();
        terminal->enter(entering, leaving);
        const std::function<void()> fail = [] { throw std::runtime_error("nobody"); };
        [&]() noexcept { fail(); }();
        return "still alive";
    });
    EXPECT_EQ(report, std::nullopt);
    EXPECT_TRUE(showsKeysAsTheyAreTyped(test.modes()));
    EXPECT_THAT(test.terminal.read(), HasSubstr(leaving));
}

TEST(OpenTerminal, neverWaitsForOneThatTakesNothing) {
    const TerminalOfTest test;
    const auto report = test.run([&] {
        auto terminal = OpenTerminal::open();
        terminal->enter(entering, leaving);
        // Far more than any terminal keeps.
        const bool written = terminal->write(std::string(4'000'000, 'x'));
        return std::string{written && terminal->isBehind() ? "behind" : "written"};
    });
    EXPECT_EQ(report, "behind");
    EXPECT_TRUE(showsKeysAsTheyAreTyped(test.modes()));
}

TEST(OpenTerminal, writesOnWhereItLeftOffOnceTheTerminalTakesMore) {
    const TerminalOfTest test;
    const std::string text = std::string(300'000, 'x') + "end";
    ChildProcess child{[&] {
        return onTerminal(test.terminal, [&] {
            auto terminal = OpenTerminal::open();
            terminal->enter(entering, leaving);
            if (!terminal->write(text)) return std::string{"gone"};
            while (terminal->isBehind()) {
                pollfd writer{terminal->descriptor(), POLLOUT, 0};
                if (poll(&writer, 1, 60'000) < 1 || !terminal->writeOn()) break;
            }
            return std::string{terminal->isBehind() ? "behind" : "written"};
        });
    }};
    std::string seen;
    while (!seen.contains(leaving) && !child.hasEnded()) seen += test.terminal.read();
    EXPECT_EQ(child.result(), "written");
    seen += test.terminal.read();
    EXPECT_EQ(seen, entering + text + leaving);
}

TEST(OpenTerminal, leavesTheStreamsOfOthersAsTheyWait) {
    const TerminalOfTest test;
    EXPECT_EQ(test.run([&] {
        auto terminal = OpenTerminal::open();
        terminal->enter(entering, leaving);
        return std::string{(fcntl(STDOUT_FILENO, F_GETFL) & O_NONBLOCK) != 0 ? "never" : "waits"};
    }),
              "waits");
}

TEST(OpenTerminal, givesWhatIsTypedAndNothingWhereNothingIs) {
    const TerminalOfTest test;
    ASSERT_TRUE(test.terminal.type("jk"));
    EXPECT_EQ(test.run([&] {
        auto terminal = OpenTerminal::open();
        terminal->enter(entering, leaving);
        pollfd reader{terminal->descriptor(), POLLIN, 0};
        poll(&reader, 1, 60'000);
        const auto typed = terminal->read().value_or("gone");
        return typed + "|" + terminal->read().value_or("gone");
    }),
              "jk|");
}

TEST(OpenTerminal, knowsItsSize) {
    const TerminalOfTest test;
    const winsize size{33, 101, 0, 0};
    ASSERT_EQ(ioctl(test.keptOpen.number(), TIOCSWINSZ, &size), 0);
    EXPECT_EQ(test.run([&] {
        const auto found = OpenTerminal::open()->size();
        return std::to_string(found.columns) + "x" + std::to_string(found.rows);
    }),
              "101x33");
}

TEST(OpenTerminal, isNotTakenWhereThereIsNone) {
    const auto report = inChildProcess([] {
        setsid();
        const int file = ::open("/dev/null", O_RDWR);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO}) dup2(file, stream);
        const auto terminal = OpenTerminal::open();
        return terminal ? std::string{"taken"} : terminal.error().text();
    });
    EXPECT_EQ(report, "Standard input or output is no terminal.");
}

TEST(OpenTerminal, isNotTakenFromTheBackground) {
    const TerminalOfTest test;
    EXPECT_EQ(test.run([&] {
        return inChildProcess([] {
                   setpgid(0, 0);
                   const auto terminal = OpenTerminal::open();
                   return terminal ? std::string{"taken"} : terminal.error().text();
               })
            .value_or("ended");
    }),
              "This program runs in the background.");
}

}  // namespace
}  // namespace tallowbrook::host
