// The kernel's process table: who runs, who started it, and on which terminal.
//
// Stateless; safe from any thread. Nothing here fails: what cannot be learned is absent or missing
// from the list, and what was learned may be out of date at once, since processes come and go.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Terminal/TerminalDevice.h"

namespace tallowbrook {

struct ProcessRecord {
    pid_t pid = 0;
    pid_t parentPID = 0;          // 0 where the parent cannot be seen
    std::optional<dev_t> device;  // of the controlling terminal, absent when there is none
    std::string name;             // the command name as `decodeCommandName` reads it
    bool operator==(const ProcessRecord&) const = default;
};

namespace ProcessTable {

// A process that has exited still counts until its parent has waited for it. Absent when there is
// no such process, or when it may not be looked at.
std::optional<ProcessRecord> process(pid_t pid);

// Every process with this controlling terminal, in the kernel's order; empty on any failure.
std::vector<ProcessRecord> processesOnDevice(dev_t device);

// The name of a terminal below /dev, such as ttys003 or pts/3. Absent when the device has none.
std::optional<std::string> deviceName(dev_t device);

// Absent when there is no such file.
std::optional<dev_t> deviceNumber(const TerminalDevice& terminal);

// No kernel keeps more of a command name for a process of the user.
inline constexpr std::size_t maxCommandNameBytes = 17;

// Reads a command name from the kernel's buffer: the bytes before the first NUL and at most
// `maxCommandNameBytes`, as UTF-8. Each longest piece that could have begun a character, or else
// each single byte, that is not valid becomes one U+FFFD.
std::string decodeCommandName(std::string_view buffer);

}  // namespace ProcessTable
}  // namespace tallowbrook
