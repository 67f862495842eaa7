// A unified diff as a terminal shows it.
#pragma once

#include <string>
#include <string_view>

namespace tallowbrook::host {

enum class Colour { off, on };

// Off unless standard output is a terminal that shows colours and the user has not set NO_COLOR.
Colour colourOfStandardOutput();

// The diff with every line made printable, tabs and line ends left as they are, and, with colours,
// added lines green, removed ones red and headings set apart.
std::string showDiff(std::string_view diff, Colour colour);

}  // namespace tallowbrook::host
