// What each key of the live view does: the one table that dispatches the keys, and that the hint
// line and the list of keys are made of.
//
// Pure functions; safe from any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tallowbrook::host {

// A character that was typed, or one of the keys below, which lie behind the last code point.
using Key = char32_t;

namespace Keys {
inline constexpr Key tab = U'\t';
inline constexpr Key enter = U'\n';
inline constexpr Key redraw = U'\f';  // Ctrl-L
inline constexpr Key escape = 0x1B;
inline constexpr Key backspace = 0x7F;
inline constexpr Key up = 0x110000;
inline constexpr Key down = 0x110001;
inline constexpr Key pageUp = 0x110002;
inline constexpr Key pageDown = 0x110003;
inline constexpr Key home = 0x110004;
inline constexpr Key end = 0x110005;
// Around what the terminal pastes: it was not typed, and means no action.
inline constexpr Key pasteBegins = 0x110006;
inline constexpr Key pasteEnds = 0x110007;
}  // namespace Keys

enum class Action {
    moveUp,
    moveDown,
    pageUp,
    pageDown,
    toFirst,
    toLast,
    focus,
    nextWaiting,
    explain,
    mute,
    pause,
    dismiss,
    filter,
    fold,
    back,
    redraw,
    help,
    quit,
};

// Absent for a key that means nothing.
std::optional<Action> actionOf(Key key);

// The actions that the view's owner can carry out: the others are neither listed nor done.
using Offered = std::set<Action>;
Offered allActions();

// "Enter focus  n next  ? keys  q quit": what fits into `columns`, the most useful first to stay.
std::string hintLine(const Offered& offered, std::size_t columns);

// Every key and what it does, as "Enter" and "bring the session's window to the front".
std::vector<std::pair<std::string, std::string>> listOfKeys(const Offered& offered);

}  // namespace tallowbrook::host
