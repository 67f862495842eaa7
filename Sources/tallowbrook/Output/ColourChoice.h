// Whether colours are wanted.
#pragma once

#include <string_view>

namespace tallowbrook::host {

enum class ColourChoice { automatic, always, never };

// The words "auto", "always" and "never"; `automatic` for any other.
ColourChoice colourChoice(std::string_view word);

// Whether what goes to a terminal is to be coloured: as chosen, else unless NO_COLOR is set to
// anything (https://no-color.org). Reads the environment.
bool wantsColours(ColourChoice choice);

}  // namespace tallowbrook::host
