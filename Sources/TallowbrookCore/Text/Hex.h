// Hexadecimal digits.
//
// Pure; safe from any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Text/Digits.h"

namespace tallowbrook::Hex {

inline constexpr std::string_view lowerDigits = "0123456789abcdef";
inline constexpr std::string_view upperDigits = "0123456789ABCDEF";

// 0 to 15, for a digit in either case; absent for any other character.
constexpr std::optional<std::uint32_t> value(char digit) {
    if (isDigit(digit)) return static_cast<std::uint32_t>(digit - '0');
    if (digit >= 'a' && digit <= 'f') return static_cast<std::uint32_t>(digit - 'a' + 10);
    if (digit >= 'A' && digit <= 'F') return static_cast<std::uint32_t>(digit - 'A' + 10);
    return std::nullopt;
}

// Appends the byte as two of `digits`.
inline void append(std::string& text, std::uint8_t byte, std::string_view digits) {
    text += digits[byte >> 4U];
    text += digits[byte & 0xFU];
}

}  // namespace tallowbrook::Hex
