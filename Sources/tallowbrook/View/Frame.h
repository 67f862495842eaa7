// How a picture is brought onto a terminal.
//
// A pure function; safe from any thread.
#pragma once

#include <string>

#include "View/Picture.h"
#include "View/TerminalText.h"

namespace tallowbrook::host {

// What turns the screen that shows `before` into one that shows `after`: nothing where they are
// alike, the lines that differ where their sizes are, else all of it. Absent before the first.
std::string frame(const Picture* before, const Picture& after, const TerminalText& terminal);

}  // namespace tallowbrook::host
