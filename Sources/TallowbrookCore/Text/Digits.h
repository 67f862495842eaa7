// Decimal digits and the numbers they make, in ASCII only and whatever the locale.
//
// Pure; safe from any thread.
#pragma once

#include <algorithm>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>

namespace tallowbrook {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Takes all digits at the front of `text`, and gives them; empty where there is none.
constexpr std::string_view takeDigits(std::string_view& text) {
    const auto end = std::ranges::find_if_not(text, isDigit);
    const auto count = static_cast<std::size_t>(end - text.begin());
    const std::string_view digits = text.substr(0, count);
    text.remove_prefix(count);
    return digits;
}

// The number that the whole text is: digits alone, behind one "-" where `Number` is signed. Absent
// for an empty text, a blank, a "+", any other character, and a number that `Number` cannot hold.
template <std::integral Number>
std::optional<Number> parseNumber(std::string_view text) {
    Number number{};
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const auto [stop, error] = std::from_chars(begin, end, number);
    if (error != std::errc{} || stop != end) return std::nullopt;
    return number;
}

}  // namespace tallowbrook
