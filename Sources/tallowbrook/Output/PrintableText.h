// Text made fit for a screen. What the host prints came from files that any program of the user may
// have written. Pure functions; safe from any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tallowbrook::host::PrintableText {

// Control characters, marks that turn the direction of writing, and bytes that are no UTF-8 each
// become U+FFFD, so that no text can move the cursor or pose as another.
std::string printable(std::string_view text);

// Each line made printable; the line feeds stay.
std::string printableLines(std::string_view text);

// A JSON text (RFC 8259) of the same value, in which such characters stand as escapes.
std::string printableJSON(std::string_view json);

// How many columns the text takes on a screen.
std::size_t width(std::string_view text);

// The text, at most `columns` wide on the screen; a longer one ends in "…".
std::string shortened(std::string_view text, std::size_t columns);

// As `shortened`, with blanks behind it, `columns` wide.
std::string padded(std::string_view text, std::size_t columns);

// The text in lines of at most `columns`, at least one, broken at blanks where there are any; the
// second and further ones begin with `indent` blanks.
std::vector<std::string> wrappedLines(std::string_view text, std::size_t columns,
                                      std::size_t indent = 0);

// `wrappedLines` as one text, without a line feed at its end.
std::string wrapped(std::string_view text, std::size_t columns = 80);

}  // namespace tallowbrook::host::PrintableText
