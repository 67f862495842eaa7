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

// Whether each case stands in its table at the place of its number.
template <typename Enum>
consteval bool isNamedInOrder() {
    const auto& table = namesOf(Enum{});
    for (std::size_t i = 0; i < table.size(); ++i)
        if (table[i].first != static_cast<Enum>(i)) return false;
    return true;
}

template <typename Enum>
constexpr std::string_view rawValue(Enum value) {
    static_assert(isNamedInOrder<Enum>());
    const auto& table = namesOf(value);
    const auto place = static_cast<std::size_t>(value);
    return place < table.size() ? table[place].second : std::string_view{};
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
