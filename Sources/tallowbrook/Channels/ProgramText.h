// Texts on the command lines of programs that show notifications.
//
// Pure functions; safe from any thread.
#pragma once

#include <string>
#include <string_view>

namespace tallowbrook::host::ProgramText {

// A text that no such program takes for an option, or for a list or a dictionary as macOS reads
// them from arguments: before a mark at its front stands a character that is not seen. Without
// control characters, and cut where it is long.
std::string argument(std::string_view text);

// One word for /bin/sh.
std::string quoted(std::string_view word);

}  // namespace tallowbrook::host::ProgramText
