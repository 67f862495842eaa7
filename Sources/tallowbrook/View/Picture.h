// What is on a screen: lines of text in places and styles, and nothing of how a terminal is told.
//
// Plain values and pure functions; safe from any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallowbrook::host {

struct ScreenSize {
    std::size_t columns = 80;
    std::size_t rows = 24;
    bool operator==(const ScreenSize&) const = default;
};

// On the terminal's own background. Those that are hard to read on a light or on a dark one are
// not among them.
enum class Colour { own, red, green, magenta, cyan };

struct Style {
    Colour colour = Colour::own;
    bool bold = false;
    bool dim = false;
    bool reverse = false;
    bool operator==(const Style&) const = default;
};

// A text from a column on; it ends where the next one of its line begins, or before.
struct Span {
    std::size_t column = 0;
    std::string text;
    Style style;
    bool operator==(const Span&) const = default;
};

using PictureLine = std::vector<Span>;

struct Picture {
    ScreenSize size;
    std::vector<PictureLine> lines;     // one for each row of the screen
    std::optional<std::size_t> cursor;  // its column in the row `cursorRow`; hidden where absent
    std::size_t cursorRow = 0;
    bool operator==(const Picture&) const = default;

    // Without its styles, without blanks at the ends of lines, a line feed behind each line.
    std::string text() const;
};

// A symbol, and what stands for it where a terminal shows ASCII alone.
struct Symbol {
    std::string_view text;
    char plain;
};

namespace Symbols {
inline constexpr Symbol waiting{"●", '!'};
inline constexpr Symbol failed{"✗", 'x'};
inline constexpr Symbol working{"▸", '>'};
inline constexpr Symbol stale{"○", '?'};
inline constexpr Symbol interrupted{"■", '#'};
inline constexpr Symbol unknown{"·", '.'};
inline constexpr Symbol completed{"✓", '+'};
inline constexpr Symbol selected{"›", '>'};
inline constexpr Symbol rule{"─", '-'};
inline constexpr Symbol above{"↑", '^'};
inline constexpr Symbol below{"↓", 'v'};
}  // namespace Symbols

// The text for a terminal of ASCII: the symbols by their stand-ins, what else there is by "?", as
// many as the columns it takes.
std::string withoutUnicode(std::string_view text);

}  // namespace tallowbrook::host
