// Makes the few tokens readable that are valid JSON (RFC 8259) but that the JSON library refuses:
// a lone surrogate escape, and a number whose exponent it cannot hold or work out.
//
// Each operation gives a copy of `text` of the same length, or nothing where it has nothing to
// replace. None makes an invalid text valid. Pure functions; safe from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tallowbrook::JSONRepair {

// For a payload, which nothing that the helper does not read may cost. Agents cut long texts,
// sometimes between the two halves of a surrogate pair, and pass numbers on as they found them.
// Every lone surrogate escape becomes \u0000, which no rule for fields accepts, and every number
// with an exponent that needs more than 32 bits a 0.0.
std::optional<std::string> forPayload(std::string_view text);

// For an event line, where a number beyond double range is an error but a small one is none. Every
// number with an exponent becomes 0.0, which no integer field accepts, unless its magnitude is
// 1.7976931348623158079e308 or more.
std::optional<std::string> forEventLine(std::string_view text);

}  // namespace tallowbrook::JSONRepair
