// Code units of UTF-16 (RFC 2781), in which JSON escapes write a character beyond U+FFFF: a high
// surrogate followed by a low one.
//
// Pure; safe from any thread.
#pragma once

#include <cstdint>

namespace tallowbrook::UTF16 {

inline constexpr std::uint32_t firstHighSurrogate = 0xD800;
inline constexpr std::uint32_t firstLowSurrogate = 0xDC00;
inline constexpr std::uint32_t lastLowSurrogate = 0xDFFF;
inline constexpr std::uint32_t firstBeyondOneUnit = 0x10000;

constexpr bool isHighSurrogate(std::uint32_t unit) {
    return unit >= firstHighSurrogate && unit < firstLowSurrogate;
}

constexpr bool isLowSurrogate(std::uint32_t unit) {
    return unit >= firstLowSurrogate && unit <= lastLowSurrogate;
}

struct SurrogatePair {
    std::uint32_t high = firstHighSurrogate;
    std::uint32_t low = firstLowSurrogate;
    bool operator==(const SurrogatePair&) const = default;
};

// The code point that the pair stands for; each half must be what its name says.
constexpr std::uint32_t codePoint(SurrogatePair pair) {
    return firstBeyondOneUnit + ((pair.high - firstHighSurrogate) << 10U) +
           (pair.low - firstLowSurrogate);
}

// The pair for a code point of U+10000 to U+10FFFF.
constexpr SurrogatePair surrogatePair(std::uint32_t codePoint) {
    const std::uint32_t offset = codePoint - firstBeyondOneUnit;
    return {firstHighSurrogate + (offset >> 10U), firstLowSurrogate + (offset & 0x3FFU)};
}

}  // namespace tallowbrook::UTF16
