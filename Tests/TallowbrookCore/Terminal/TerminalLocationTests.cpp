#include "Terminal/TerminalLocation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "Support/PseudoTerminal.h"
#include "WaitingChild.h"

namespace tallowbrook {
namespace {

constexpr dev_t namedDevice = 3;
constexpr dev_t otherDevice = 4;
constexpr dev_t refusedDevice = 5;
constexpr dev_t namelessDevice = 6;

ProcessRecord process(pid_t pid, pid_t parentPID, std::optional<dev_t> device = std::nullopt) {
    return {.pid = pid, .parentPID = parentPID, .device = device, .name = "sh"};
}

TEST(ControllingTerminal, isThatOfTheNearestAncestorThatHasOne) {
    struct Row {
        const char* why;
        std::vector<ProcessRecord> processes;  // the walk starts at the first
        int maxAncestors;
        std::optional<std::string> name;
        std::vector<pid_t> examined;
    };
    const std::vector line{process(10, 11), process(11, 12), process(12, 13, namedDevice),
                           process(13, 1, otherDevice)};
    for (const auto& [why, processes, maxAncestors, name, examined] : {
             Row{"its own",
                 {process(10, 11, namedDevice), process(11, 1, otherDevice)},
                 6,
                 "ttys003",
                 {10}},
             Row{"its own, though no ancestor counts",
                 {process(10, 11, namedDevice)},
                 0,
                 "ttys003",
                 {10}},
             Row{"an ancestor's", line, 6, "ttys003", {10, 11, 12}},
             Row{"the last ancestor that counts", line, 2, "ttys003", {10, 11, 12}},
             Row{"the ancestor behind it", line, 1, {}, {10, 11}},
             Row{"no ancestor counts", line, 0, {}, {10}},
             Row{"any count", line, std::numeric_limits<int>::max(), "ttys003", {10, 11, 12}},
             Row{"process 1", {process(10, 1), process(1, 11, namedDevice)}, 6, {}, {10}},
             Row{"process 0", {process(10, 0), process(0, 11, namedDevice)}, 6, {}, {10}},
             Row{"no process", {process(10, -1), process(-1, 11, namedDevice)}, 6, {}, {10}},
             Row{"2 is a parent like any other",
                 {process(10, 2), process(2, 0, namedDevice)},
                 6,
                 "ttys003",
                 {10, 2}},
             Row{"start at process 1", {process(1, 2, namedDevice)}, 6, {}, {}},
             Row{"start at process 0", {process(0, 2, namedDevice)}, 6, {}, {}},
             Row{"start at none", {process(-1, 2, namedDevice)}, 6, {}, {}},
             Row{"a vanished parent", {process(10, 11)}, 6, {}, {10, 11}},
             Row{"nameless, so on to the parent",
                 {process(10, 11, namelessDevice), process(11, 1, namedDevice)},
                 6,
                 "ttys003",
                 {10, 11}},
             Row{"of a refused name, which ends the walk",
                 {process(10, 11, refusedDevice), process(11, 1, namedDevice)},
                 6,
                 {},
                 {10}},
             Row{"a loop of parents",
                 {process(10, 11), process(11, 10)},
                 6,
                 {},
                 {10, 11, 10, 11, 10, 11, 10}},
         }) {
        std::vector<pid_t> seen;
        const ControllingTerminal::Lookup lookup{
            .process = [&](pid_t pid) -> std::optional<ProcessRecord> {
                seen.push_back(pid);
                const auto found = std::ranges::find(processes, pid, &ProcessRecord::pid);
                if (found == processes.end()) return std::nullopt;
                return *found;
            },
            .deviceName = [](dev_t device) -> std::optional<std::string> {
                if (device == namedDevice) return "ttys003";
                if (device == otherDevice) return "ttys004";
                if (device == refusedDevice) return "pts/3";
                return std::nullopt;
            },
        };
        EXPECT_EQ(ControllingTerminal::deviceName(processes.front().pid, maxAncestors, lookup),
                  name)
            << why;
        EXPECT_EQ(seen, examined) << why;
    }
    EXPECT_EQ(ControllingTerminal::maxAncestors, 6);
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
             Row{"would leave /dev", "tty/../x", false},
             Row{"beginning inside", "xtty1", false},
             Row{"quote", "ttys003\"", false},
             Row{"line feed at the end", "ttys003\n", false},
             Row{"NUL inside", std::string_view{"ttys\0003", 8}, false},
             Row{"letter beyond ASCII", "tty\u00E9", false},
             Row{"nothing", "", false},
         }) {
        const auto expected = isKept ? std::optional{std::string{name}} : std::nullopt;
        EXPECT_EQ(ControllingTerminal::sanitize(name), expected) << why;
    }
    EXPECT_EQ(ControllingTerminal::sanitize(std::nullopt), std::nullopt);
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
