// A question to the user that a yes answers.
#pragma once

#include <optional>
#include <string_view>

namespace tallowbrook::host {

// Shows the question, which ends in "[y/N] ", and reads a line of standard input. Anything but a
// yes is a no, the end of the input too. Absent when the question cannot be shown.
std::optional<bool> agreesTo(std::string_view question);

}  // namespace tallowbrook::host
