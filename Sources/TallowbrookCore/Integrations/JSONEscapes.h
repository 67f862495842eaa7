// The escapes of JSON strings (RFC 8259). One table, so that the reader and the writer agree.
#pragma once

#include <string_view>

namespace tallowbrook {

// The letter behind a backslash and, in the same place, the character it stands for.
inline constexpr std::string_view escapeLetters = "\"\\/bfnrt";
inline constexpr std::string_view escapeMeanings = "\"\\/\b\f\n\r\t";

// These stand in a string only as escapes.
constexpr bool isControlCharacter(char c) { return static_cast<unsigned char>(c) < 0x20; }

}  // namespace tallowbrook
