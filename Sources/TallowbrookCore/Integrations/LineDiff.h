// Line differences between two texts, and their unified form.
//
// Close to the unified format of POSIX diff -u, with two differences: a count is always written,
// and a count of 0 does not lower the start. Pure functions; safe from any thread.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Domain/EnumNames.h"

namespace tallowbrook::LineDiff {

enum class StepKind { equal, delete_, insert };
inline constexpr std::array stepKindNames{
    std::pair{StepKind::equal, std::string_view{"equal"}},
    std::pair{StepKind::delete_, std::string_view{"delete"}},
    std::pair{StepKind::insert, std::string_view{"insert"}},
};
constexpr const auto& namesOf(StepKind) { return stepKindNames; }

struct Step {
    using Kind = StepKind;

    Kind kind = Kind::equal;
    std::string text;          // of the line, without its line feed
    std::size_t oldIndex = 0;  // from 0; of an insert, the old line that comes next
    std::size_t newIndex = 0;  // from 0; of a delete, the new line that comes next
    bool operator==(const Step&) const = default;
};

// Only a line feed ends a line; a carriage return belongs to its line. Whether the last line ends
// with a line feed makes no difference, and an absent or empty text has no lines.
std::vector<std::string> lines(const std::optional<std::string>& text);

// The shortest way from the old lines to the new ones; where a line was changed, the delete comes
// first. With more than 4 million pairs of lines it is all deletes and then all inserts, which
// bounds time and memory.
std::vector<Step> editScript(std::span<const std::string> oldLines,
                             std::span<const std::string> newLines);

// An absent text stands for a file that does not exist, and its label is "/dev/null". Absent when
// both texts are present, or both absent, and their lines are the same. `context` is the number of
// unchanged lines around a change.
std::optional<std::string> unified(const std::optional<std::string>& oldText,
                                   const std::optional<std::string>& newText,
                                   std::string_view oldLabel, std::string_view newLabel,
                                   std::size_t context);

}  // namespace tallowbrook::LineDiff
