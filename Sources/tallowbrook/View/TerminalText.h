// What a terminal is told, by its own description (terminfo(5)): the one door to curses.
#pragma once

#include <cstddef>
#include <expected>
#include <functional>
#include <map>
#include <string>

#include "Output/Sentence.h"
#include "View/KeyDecoder.h"
#include "View/Picture.h"

namespace tallowbrook::host {

struct TerminalText {
    // Before the first and behind the last picture: the screen of its own, the keypad, no wrapping
    // of lines, no cursor; and all of it taken back.
    std::string enter;
    std::string leave;
    std::string clear;
    std::string clearLine;  // from the cursor on
    std::function<std::string(std::size_t row, std::size_t column)> moveTo;
    std::string showCursor;
    std::string hideCursor;
    std::string ring;

    // Empty where the terminal cannot.
    std::string normal;
    std::string bold;
    std::string dim;
    std::string reverse;
    std::map<Colour, std::string> colours;

    bool hasUnicode = false;
    KeySequences keys;

    // Of the terminal behind the descriptor, as TERM names it, and of the locale's characters, as
    // the environment names it. Fails where the terminal is unknown or cannot move its cursor.
    // Sets the locale's category of characters (LC_CTYPE) for the whole process.
    [[nodiscard]] static std::expected<TerminalText, Sentence> of(int descriptor, bool withColours);
};

}  // namespace tallowbrook::host
