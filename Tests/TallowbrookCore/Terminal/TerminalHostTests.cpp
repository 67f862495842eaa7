#include "Terminal/TerminalHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "Support/PseudoTerminal.h"
#include "WaitingChild.h"

namespace tallowbrook {
namespace {

using TerminalHost::ProcessPair;

constexpr dev_t device = 0x10000003;

// A made-up machine with one terminal, ttys003.
struct Table {
    std::map<pid_t, ProcessRecord> processes;
    std::vector<pid_t> kernelOrder;  // of the processes on the terminal

    void add(pid_t pid, pid_t parentPID, const std::string& name) {
        processes[pid] = {.pid = pid, .parentPID = parentPID, .device = {}, .name = name};
    }
    void addOnTerminal(pid_t pid, pid_t parentPID) {
        processes[pid] = {.pid = pid, .parentPID = parentPID, .device = device, .name = "sh"};
        kernelOrder.push_back(pid);
    }

    TerminalHost::Lookup lookup() const {
        return {
            .process = [this](pid_t pid) -> std::optional<ProcessRecord> {
                const auto found = processes.find(pid);
                if (found == processes.end()) return std::nullopt;
                return found->second;
            },
            .processesOnDevice =
                [this](dev_t asked) {
                    std::vector<ProcessRecord> found;
                    if (asked != device) return found;
                    for (const pid_t pid : kernelOrder) found.push_back(processes.at(pid));
                    return found;
                },
            .deviceNumber = [](const TerminalDevice& terminal) -> std::optional<dev_t> {
                if (terminal.name() != "ttys003") return std::nullopt;
                return device;
            },
        };
    }
};

TEST(TerminalHost, listsTheProcessesOfATerminalInTheKernelsOrder) {
    Table table;
    table.addOnTerminal(102, 100);
    table.addOnTerminal(100, 50);
    table.addOnTerminal(101, 100);
    table.add(50, 1, "Terminal");
    EXPECT_EQ(TerminalHost::processesOnTTY("ttys003", table.lookup()),
              (std::vector<ProcessPair>{{102, 100}, {100, 50}, {101, 100}}));
}

TEST(TerminalHost, anUnknownTerminalHasNoProcesses) {
    Table table;
    table.addOnTerminal(100, 50);
    EXPECT_TRUE(TerminalHost::processesOnTTY("ttys004", table.lookup()).empty());
    EXPECT_TRUE(TerminalHost::processesOnTTY("ttynosuchdevice").empty());
}

TEST(TerminalHost, aMalformedTerminalNameIsNotEvenLookedUp) {
    for (const char* name : {"", "tty", "ttyS0", "pts/3", "tty/../null", "tty1234567890abcd"}) {
        int lookups = 0;
        TerminalHost::Lookup lookup;
        lookup.deviceNumber = [&](const TerminalDevice&) -> std::optional<dev_t> {
            ++lookups;
            return device;
        };
        lookup.processesOnDevice = [](dev_t) {
            return std::vector{
                ProcessRecord{.pid = 100, .parentPID = 50, .device = device, .name = "sh"}};
        };
        EXPECT_TRUE(TerminalHost::processesOnTTY(name, lookup).empty()) << name;
        EXPECT_TRUE(TerminalHost::hostChain(name, lookup).empty()) << name;
        EXPECT_EQ(lookups, 0) << name;
    }
}

TEST(TerminalHost, theHostIsTheLowestParentOutsideTheTerminal) {
    struct Row {
        const char* why;
        std::vector<ProcessPair> processes;
        std::optional<pid_t> host;
    };
    for (const auto& [why, processes, host] : {
             Row{"no process on the terminal", {}, std::nullopt},
             Row{"shell and its children", {{100, 50}, {101, 100}, {102, 100}}, 50},
             Row{"the lower process wins", {{200, 10}, {150, 20}}, 20},
             Row{"the lower process, not the lower parent", {{150, 20}, {200, 10}}, 20},
             Row{"first of two entries of one process", {{100, 50}, {100, 40}}, 50},
             Row{"orphan of process 1 is passed over", {{90, 1}, {100, 50}}, 50},
             Row{"parent that cannot be seen is passed over", {{90, 0}, {100, 50}}, 50},
             Row{"every parent below 2", {{90, 1}, {91, 0}, {92, -1}}, std::nullopt},
             Row{"2 is a parent like any other", {{90, 2}}, 2},
             Row{"every parent on the terminal", {{100, 101}, {101, 100}}, std::nullopt},
             Row{"on the terminal or below 2", {{100, 1}, {101, 100}}, std::nullopt},
             Row{"its own parent", {{100, 100}}, std::nullopt},
         }) {
        EXPECT_EQ(TerminalHost::hostPID(processes), host) << why;
    }
}

TEST(TerminalHost, theChainGoesFromTheHostUpToTheChildOfProcessOne) {
    struct Parent {
        pid_t pid;
        pid_t parentPID;
        const char* name;
    };
    struct Row {
        const char* why;
        pid_t host;  // the parent of the one process on the terminal
        std::vector<Parent> above;
        std::vector<TerminalHost::Process> chain;
    };
    for (const auto& [why, host, above, chain] : {
             Row{"up to process 1",
                 50,
                 {{50, 40, "login"}, {40, 1, "Terminal"}, {1, 0, "launchd"}},
                 {{50, "login"}, {40, "Terminal"}}},
             Row{"below a parent that cannot be seen",
                 50,
                 {{50, 0, "login"}, {0, 60, "never"}},
                 {{50, "login"}}},
             Row{"below no process", 50, {{50, -1, "login"}, {-1, 60, "never"}}, {{50, "login"}}},
             Row{"2 is a process like any other", 2, {{2, 1, "kthreadd"}}, {{2, "kthreadd"}}},
             Row{"no host", 1, {{1, 0, "init"}}, {}},
             Row{"a vanished host", 50, {}, {}},
             Row{"a vanished parent", 50, {{50, 40, "tmux"}}, {{50, "tmux"}}},
             Row{"six at most, though the parents go round",
                 50,
                 {{50, 51, "a"}, {51, 50, "b"}},
                 {{50, "a"}, {51, "b"}, {50, "a"}, {51, "b"}, {50, "a"}, {51, "b"}}},
         }) {
        Table table;
        table.addOnTerminal(101, 100);
        table.addOnTerminal(100, host);
        for (const auto& [pid, parentPID, name] : above) table.add(pid, parentPID, name);
        EXPECT_EQ(TerminalHost::hostChain("ttys003", table.lookup()), chain) << why;
    }
    EXPECT_TRUE(TerminalHost::hostChain("ttys003", Table{}.lookup()).empty());
}

TEST(TerminalHost, onlyAChainThatBeginsWithExactlyTmuxIsTmux) {
    struct Row {
        const char* why;
        std::vector<TerminalHost::Process> chain;
        bool isTmux;
    };
    for (const auto& [why, chain, isTmux] : {
             Row{"empty chain", {}, false},
             Row{"tmux alone", {{50, "tmux"}}, true},
             Row{"tmux first", {{50, "tmux"}, {40, "Terminal"}}, true},
             Row{"longer name", {{50, "tmux: server"}}, false},
             Row{"no name", {{50, ""}}, false},
         }) {
        EXPECT_EQ(TerminalHost::isTmux(chain), isTmux) << why;
    }
}

TEST(TerminalHost, findsTheRealHostOfARealTerminal) {
    const PseudoTerminal terminal;
    ASSERT_FALSE(terminal.path.empty());
    const WaitingChild shell{[&]() -> std::optional<std::string> {
        if (!takeTerminal(terminal.path)) return std::nullopt;
        const pid_t command = fork();
        if (command == 0) WaitingChild::standStill();
        return std::to_string(command);
    }};
    ASSERT_TRUE(shell.report);
    const pid_t command = std::stoi(*shell.report);

    // Pseudo-terminals have an acceptable name on some systems only, so the name is made up.
    TerminalHost::Lookup lookup;
    lookup.deviceNumber = [&](const TerminalDevice&) { return terminal.device; };
    const auto processes = TerminalHost::processesOnTTY("ttys003", lookup);
    ASSERT_EQ(processes.size(), 2U);
    EXPECT_NE(std::ranges::find(processes, ProcessPair{shell.pid, getpid()}), processes.end());
    EXPECT_NE(std::ranges::find(processes, ProcessPair{command, shell.pid}), processes.end());

    const auto chain = TerminalHost::hostChain("ttys003", lookup);
    ASSERT_FALSE(chain.empty());
    EXPECT_LE(chain.size(), TerminalHost::maxDepth);
    EXPECT_EQ(chain.front().pid, getpid());
    EXPECT_EQ(chain.front().name, ProcessTable::process(getpid())->name);
    if (getppid() > 1) {
        ASSERT_GE(chain.size(), 2U);
        EXPECT_EQ(chain[1].pid, getppid());
    }
}

}  // namespace
}  // namespace tallowbrook
