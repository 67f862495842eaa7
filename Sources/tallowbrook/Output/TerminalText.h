// Text made fit for a terminal. What the host prints came from files that any program of the user
// may have written.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Domain/Instant.h"

namespace tallowbrook::host::TerminalText {

// Control characters, marks that turn the direction of writing, and bytes that are no UTF-8 each
// become U+FFFD, so that no text can move the cursor or pose as another.
std::string printable(std::string_view text);

// The same for each line; the line feeds stay.
std::string printableLines(std::string_view text);

// A JSON text (RFC 8259) of the same value, in which such characters stand as escapes.
std::string printableJSON(std::string_view json);

// The text with blanks behind it, `columns` wide on the screen; a longer one ends in "…".
std::string padded(std::string_view text, std::size_t columns);

// The local time of day, "14:05:09".
std::string timeOfDay(Instant instant);

// "14:05" for a time of the local day of `now`, else "21 Nov 14:05", and with the year
// "21 Nov 2025 14:05" in another year.
std::string shortTime(Instant instant, Instant now);

// "just now", "5 min ago", "3 h ago", "2 days ago".
std::string ago(Instant instant, Instant now);

}  // namespace tallowbrook::host::TerminalText
