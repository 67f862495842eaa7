#include "Terminal/TerminalLocation.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>

#include "Support/PseudoTerminal.h"
#include "WaitingChild.h"

namespace tallowbrook {
namespace {

constexpr dev_t namedDevice = 3;
constexpr dev_t otherDevice = 4;
constexpr dev_t refusedDevice = 5;
constexpr dev_t namelessDevice = 6;

// A made-up machine, and a record of which processes were looked at.
struct Table {
    std::map<pid_t, ProcessRecord> processes;
    std::vector<pid_t> examined;

    void add(pid_t pid, pid_t parentPID, std::optional<dev_t> terminal = std::nullopt) {
        processes[pid] = {.pid = pid, .parentPID = parentPID, .device = terminal, .name = "sh"};
    }

    std::optional<std::string> deviceName(pid_t startingAt, int maxAncestors) {
        examined.clear();
        const ControllingTerminal::Lookup lookup{
            .process = [this](pid_t pid) -> std::optional<ProcessRecord> {
                examined.push_back(pid);
                const auto found = processes.find(pid);
                if (found == processes.end()) return std::nullopt;
                return found->second;
            },
            .deviceName = [](dev_t device) -> std::optional<std::string> {
                if (device == namedDevice) return "ttys003";
                if (device == otherDevice) return "ttys004";
                if (device == refusedDevice) return "pts/3";
                return std::nullopt;
            },
        };
        return ControllingTerminal::deviceName(startingAt, maxAncestors, lookup);
    }
};

// 10 is the start, 11 its parent and so on; only the last has a terminal.
Table lineWithTerminalAt(int ancestor) {
    Table table;
    for (int i = 0; i < ancestor; ++i) table.add(10 + i, 11 + i);
    table.add(10 + ancestor, 1, namedDevice);
    return table;
}

TEST(ControllingTerminal, aProcessOnATerminalGivesItsName) {
    Table table;
    table.add(10, 11, namedDevice);
    table.add(11, 1, otherDevice);
    EXPECT_EQ(table.deviceName(10, ControllingTerminal::maxAncestors), "ttys003");
    EXPECT_EQ(table.examined, (std::vector<pid_t>{10}));
}

TEST(ControllingTerminal, aProcessWithoutATerminalTakesItsParents) {
    Table table;
    table.add(10, 11);
    table.add(11, 12, namedDevice);
    table.add(12, 1, otherDevice);
    EXPECT_EQ(table.deviceName(10, ControllingTerminal::maxAncestors), "ttys003");
    EXPECT_EQ(table.deviceName(10, 1), "ttys003");
}

TEST(ControllingTerminal, noAncestorsMeansTheStartAlone) {
    Table onTerminal = lineWithTerminalAt(0);
    EXPECT_EQ(onTerminal.deviceName(10, 0), "ttys003");
    Table belowTerminal = lineWithTerminalAt(1);
    EXPECT_EQ(belowTerminal.deviceName(10, 0), std::nullopt);
    EXPECT_EQ(belowTerminal.examined, (std::vector<pid_t>{10}));
}

TEST(ControllingTerminal, theWalkEndsAfterTheGivenCountOfAncestors) {
    ASSERT_EQ(ControllingTerminal::maxAncestors, 6);
    Table near = lineWithTerminalAt(6);
    EXPECT_EQ(near.deviceName(10, 6), "ttys003");
    Table far = lineWithTerminalAt(7);
    EXPECT_EQ(far.deviceName(10, 6), std::nullopt);
    EXPECT_EQ(far.examined, (std::vector<pid_t>{10, 11, 12, 13, 14, 15, 16}));
    EXPECT_EQ(far.deviceName(10, 7), "ttys003");
    EXPECT_EQ(far.deviceName(10, std::numeric_limits<int>::max()), "ttys003");
}

TEST(ControllingTerminal, aStartBelowTwoIsNotEvenLookedUp) {
    Table table;
    for (const pid_t pid : {1, 0, -1, std::numeric_limits<pid_t>::min()}) {
        table.add(pid, 2, namedDevice);
        EXPECT_EQ(table.deviceName(pid, 6), std::nullopt) << pid;
        EXPECT_TRUE(table.examined.empty()) << pid;
    }
    table.add(2, 0, namedDevice);
    EXPECT_EQ(table.deviceName(2, 6), "ttys003");
}

TEST(ControllingTerminal, aParentBelowTwoEndsTheWalk) {
    for (const pid_t parent : {1, 0, -1}) {
        Table table;
        table.add(10, parent);
        table.add(parent, 11, namedDevice);
        EXPECT_EQ(table.deviceName(10, 6), std::nullopt) << parent;
        EXPECT_EQ(table.examined, (std::vector<pid_t>{10})) << parent;
    }
    Table table;
    table.add(10, 2);
    table.add(2, 0, namedDevice);
    EXPECT_EQ(table.deviceName(10, 6), "ttys003");
}

TEST(ControllingTerminal, aVanishedProcessEndsTheWalk) {
    Table table;
    EXPECT_EQ(table.deviceName(10, 6), std::nullopt);
    table.add(10, 11);
    EXPECT_EQ(table.deviceName(10, 6), std::nullopt);
    EXPECT_EQ(table.examined, (std::vector<pid_t>{10, 11}));
}

TEST(ControllingTerminal, aTerminalWithoutANameSendsTheWalkOnToTheParent) {
    Table table;
    table.add(10, 11, namelessDevice);
    table.add(11, 1, namedDevice);
    EXPECT_EQ(table.deviceName(10, 6), "ttys003");
    EXPECT_EQ(table.deviceName(10, 0), std::nullopt);
}

TEST(ControllingTerminal, aTerminalWithARefusedNameEndsTheWalk) {
    Table table;
    table.add(10, 11, refusedDevice);
    table.add(11, 1, namedDevice);
    EXPECT_EQ(table.deviceName(10, 6), std::nullopt);
    EXPECT_EQ(table.examined, (std::vector<pid_t>{10}));
}

TEST(ControllingTerminal, aLoopOfParentsEnds) {
    Table table;
    table.add(10, 11);
    table.add(11, 10);
    EXPECT_EQ(table.deviceName(10, 6), std::nullopt);
    EXPECT_EQ(table.examined.size(), 7U);
    table.add(12, 12);
    EXPECT_EQ(table.deviceName(12, 6), std::nullopt);
    EXPECT_EQ(table.examined.size(), 7U);
}

TEST(ControllingTerminalDeathTest, aNegativeCountEndsTheProgram) {
    EXPECT_EXIT(ControllingTerminal::deviceName(getpid(), -1), testing::KilledBySignal(SIGABRT),
                "must not be negative");
    EXPECT_EXIT(ControllingTerminal::deviceName(1, -1), testing::KilledBySignal(SIGABRT),
                "must not be negative");
}

TEST(ControllingTerminal, sanitizeKeepsOnlyPlainTerminalNames) {
    struct Row {
        const char* why;
        std::string_view name;
        bool isKept;
    };
    for (const auto& [why, name, isKept] : {
             Row{"usual name", "ttys003", true},
             Row{"four bytes are enough", "tty1", true},
             Row{"three are not", "tty", false},
             Row{"sixteen bytes", "tty1234567890abc", true},
             Row{"seventeen bytes", "tty1234567890abcd", false},
             Row{"ends of both ranges", "ttyaz09", true},
             Row{"before 0", "tty/", false},
             Row{"after 9", "tty:", false},
             Row{"before a", "tty`", false},
             Row{"after z", "tty{", false},
             Row{"upper-case letter", "ttyS0", false},
             Row{"upper-case beginning", "TTY1", false},
             Row{"would leave /dev", "tty/../x", false},
             Row{"other beginning", "pts/3", false},
             Row{"beginning inside", "xtty1", false},
             Row{"other name", "console", false},
             Row{"full path", "/dev/ttys003", false},
             Row{"quote", "ttys003\"", false},
             Row{"backslash", "tty\\n", false},
             Row{"blank", "tty s003", false},
             Row{"line feed at the end", "ttys003\n", false},
             Row{"NUL inside", std::string_view{"ttys\0003", 8}, false},
             Row{"letter beyond ASCII", "tty\u00E9", false},
             Row{"digit beyond ASCII", "tty\u0663", false},
             Row{"nothing", "", false},
         }) {
        const auto expected = isKept ? std::optional{std::string{name}} : std::nullopt;
        EXPECT_EQ(ControllingTerminal::sanitize(name), expected) << why;
    }
}

TEST(ControllingTerminal, sanitizeOfNothingIsNothing) {
    EXPECT_EQ(ControllingTerminal::sanitize(std::nullopt), std::nullopt);
    EXPECT_EQ(ControllingTerminal::sanitize(std::optional<std::string>{}), std::nullopt);
    EXPECT_EQ(ControllingTerminal::sanitize(std::optional<std::string>{"ttys003"}), "ttys003");
}

TEST(ControllingTerminal, aRealProcessOnAPseudoTerminalGivesItsSanitizedName) {
    const PseudoTerminal terminal;
    ASSERT_FALSE(terminal.path.empty());
    const WaitingChild child{[&]() -> std::optional<std::string> {
        if (!takeTerminal(terminal.path)) return std::nullopt;
        return "ready";
    }};
    ASSERT_TRUE(child.report);
    const std::string nameBelowDev = terminal.path.substr(std::string_view{"/dev/"}.size());
    EXPECT_EQ(ControllingTerminal::deviceName(child.pid, 0),
              ControllingTerminal::sanitize(nameBelowDev));
}

TEST(ControllingTerminal, aRealProcessWithoutATerminalHasNoneOfItsOwn) {
    const WaitingChild child{[]() -> std::optional<std::string> {
        if (setsid() < 0) return std::nullopt;
        return "ready";
    }};
    ASSERT_TRUE(child.report);
    EXPECT_EQ(ControllingTerminal::deviceName(child.pid, 0), std::nullopt);
}

}  // namespace
}  // namespace tallowbrook
