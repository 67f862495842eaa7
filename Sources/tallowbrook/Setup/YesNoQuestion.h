// A question to the user on the terminal that standard input is.
#pragma once

#include <optional>
#include <string>

namespace tallowbrook::host {

// Shows the question with " [y/N] " behind it and waits for a line. Anything but a yes is a no, the
// end of the input too. Absent when the question cannot be shown; the reason is on standard error.
std::optional<bool> agreesTo(const std::string& question);

}  // namespace tallowbrook::host
