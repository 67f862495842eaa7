// Text in UTF-8 (RFC 3629), checked and repaired.
//
// Pure functions; safe from any thread.
#pragma once

#include <string>
#include <string_view>

namespace tallowbrook::UTF8 {

// No overlong form, no surrogate, nothing above U+10FFFF, no sequence cut short.
bool isValid(std::string_view bytes);

// The text with U+FFFD in place of each longest piece that begins a character and does not end it,
// and of each byte that begins none: the practice the Unicode Standard recommends.
std::string replacingInvalid(std::string_view bytes);

}  // namespace tallowbrook::UTF8
