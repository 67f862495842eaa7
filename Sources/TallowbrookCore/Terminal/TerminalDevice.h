// The file below /dev of a terminal, so that its name and its path are never mistaken for each
// other.
//
// Agents' events and sessions carry the name ("ttys003"), tmux prints the path ("/dev/ttys003").
// A plain value; safe from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tallowbrook {

class TerminalDevice {
 public:
    // Takes a name or a path: "ttys003", "/dev/ttys003", "/dev/pts/3". Absent for what could leave
    // /dev or needs quoting: the name is ASCII letters and digits, in parts with one slash between
    // them. Whether there is such a device is not asked.
    static std::optional<TerminalDevice> parse(std::string_view nameOrPath);

    // "ttys003" or "pts/3". `ControllingTerminal::sanitize` says whether it may stand in an event.
    const std::string& name() const { return name_; }

    // "/dev/ttys003"
    std::string path() const;

    bool operator==(const TerminalDevice&) const = default;

 private:
    explicit TerminalDevice(std::string_view name) : name_{name} {}

    std::string name_;
};

}  // namespace tallowbrook
