// Makes the few tokens readable that are valid in a payload but that the JSON library refuses.
//
// Agents cut long texts, sometimes between the two halves of a surrogate pair, and pass numbers on
// as they found them. Neither may cost an event whose other members are fine.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tallowbrook::PayloadRepair {

// A copy of `payload` in which every lone surrogate escape stands as \u0000, which no rule for
// fields accepts, and every number with an exponent that needs more than 32 bits as 0. Absent when
// there is nothing to replace. Never makes an invalid text valid.
std::optional<std::string> repair(std::string_view payload);

}  // namespace tallowbrook::PayloadRepair
