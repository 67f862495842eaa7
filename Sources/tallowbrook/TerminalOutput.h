// The two ways in which the host speaks to its user.
#pragma once

#include <string_view>

namespace tallowbrook::host::TerminalOutput {

// Writes the text to standard output as it is, at once. False when that cannot be written; the
// reason is then on standard error.
[[nodiscard]] bool show(std::string_view text);

// Writes "tallowbrook: " and the sentence, made printable, to standard error.
void complain(std::string_view sentence);

}  // namespace tallowbrook::host::TerminalOutput
