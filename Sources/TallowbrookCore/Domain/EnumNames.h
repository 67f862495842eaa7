// The raw texts of string enums, both ways.
//
// Each enum has one table of (case, raw text) pairs in declaration order beside it, and a function
// `namesOf` that gives that table back; the operations here work for every such enum.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace tallowbrook {

template <typename Enum>
constexpr std::string_view rawValue(Enum value) {
    for (const auto& [candidate, name] : namesOf(value))
        if (candidate == value) return name;
    return {};
}

// Absent when no case has this text; the comparison is exact.
template <typename Enum>
constexpr std::optional<Enum> fromRawValue(std::string_view text) {
    for (const auto& [candidate, name] : namesOf(Enum{}))
        if (name == text) return candidate;
    return std::nullopt;
}

// All cases in declaration order.
template <typename Enum>
constexpr auto allCases() {
    constexpr auto& table = namesOf(Enum{});
    std::array<Enum, table.size()> cases{};
    for (std::size_t i = 0; i < table.size(); ++i) cases[i] = table[i].first;
    return cases;
}

}  // namespace tallowbrook
