// Where a process runs: the terminal device of an agent, found from any process below it.
//
// Stateless; safe from any thread. Nothing is logged; what cannot be learned is absent. Cheap
// enough for a process that lives a millisecond: a few system calls for each process looked at.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Terminal/ProcessTable.h"

namespace tallowbrook::ControllingTerminal {

inline constexpr int maxAncestors = 6;

// What the walk asks of the machine.
struct Lookup {
    std::function<std::optional<ProcessRecord>(pid_t)> process = ProcessTable::process;
    std::function<std::optional<std::string>(dev_t)> deviceName = ProcessTable::deviceName;
};

// The terminal of the process itself or else of its nearest ancestor with one, such as ttys003;
// `maxAncestors` ancestors at most are looked at, and none at or below process 1. Absent also when
// the terminal found is one that `sanitize` refuses. A negative count ends the program.
std::optional<std::string> deviceName(pid_t startingAt, int maxAncestors,
                                      const Lookup& lookup = {});

// Gives the name back unchanged where it is "tty" and then 1 to 13 lower-case ASCII letters or
// digits, else absent. What passes can go into a file path or a script as it is.
std::optional<std::string> sanitize(std::optional<std::string_view> name);

}  // namespace tallowbrook::ControllingTerminal
