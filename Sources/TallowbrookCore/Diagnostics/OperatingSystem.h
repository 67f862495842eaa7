// Which system this program runs on.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tallowbrook::OperatingSystem {

// "macOS Version 14.5 (Build 23F79)" or "Linux Debian GNU/Linux 12 (bookworm)": the system's name
// and its own text about itself. Reads a file or asks the kernel; any thread. One implementation
// per system.
std::string description();

// The value of a variable in the text of an os-release(5) file, without its quotes and escapes;
// absent when there is none. Pure.
std::optional<std::string> releaseVariable(std::string_view releaseFile, std::string_view name);

}  // namespace tallowbrook::OperatingSystem
