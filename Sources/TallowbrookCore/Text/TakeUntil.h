// Cutting a text into pieces, one after the other.
//
// Pure; safe from any thread.
#pragma once

#include <algorithm>
#include <string_view>

namespace tallowbrook {

// Takes the piece before the first `separator`, or all where there is none, from the front of
// `rest`, and the separator with it. A text that ends in a separator has no piece behind it.
constexpr std::string_view takeUntil(std::string_view& rest, char separator) {
    const std::string_view piece = rest.substr(0, rest.find(separator));
    rest.remove_prefix(std::min(piece.size() + 1, rest.size()));
    return piece;
}

}  // namespace tallowbrook
