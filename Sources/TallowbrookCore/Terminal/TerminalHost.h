// Who owns a terminal: from a device name to the processes attached to it, and from those to the
// terminal emulator or multiplexer that hosts them.
//
// Stateless; safe from any thread. Nothing is logged; what cannot be learned is absent or empty,
// and a process that vanishes meanwhile ends a walk early.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Terminal/ProcessTable.h"

namespace tallowbrook::TerminalHost {

inline constexpr std::size_t maxDepth = 6;

struct Process {
    pid_t pid = 0;
    std::string name;  // the command name, at most 17 bytes of it
    bool operator==(const Process&) const = default;
};

struct ProcessPair {
    pid_t pid = 0;
    pid_t ppid = 0;
    bool operator==(const ProcessPair&) const = default;
};

// What the walks ask of the machine.
struct Lookup {
    std::function<std::optional<ProcessRecord>(pid_t)> process = ProcessTable::process;
    std::function<std::vector<ProcessRecord>(dev_t)> processesOnDevice =
        ProcessTable::processesOnDevice;
    std::function<std::optional<dev_t>(const TerminalDevice&)> deviceNumber =
        ProcessTable::deviceNumber;
};

// The processes attached to a terminal such as ttys003, in the kernel's order. Empty for a name
// that `ControllingTerminal::sanitize` refuses.
std::vector<ProcessPair> processesOnTTY(const std::string& tty, const Lookup& lookup = {});

// The parent, from outside the terminal, of the lowest process that has one: the program that
// opened the terminal. Absent when every parent is on the terminal too or below 2.
std::optional<pid_t> hostPID(const std::vector<ProcessPair>& processes);

// The host of a terminal and its ancestors, nearest first: at most `maxDepth`, never process 1.
std::vector<Process> hostChain(const std::string& tty, const Lookup& lookup = {});

// Whether the chain begins with a process named exactly "tmux".
bool isTmux(const std::vector<Process>& chain);

}  // namespace tallowbrook::TerminalHost
