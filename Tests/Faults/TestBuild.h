// How these tests were built.
#pragma once

#include <string_view>

namespace tallowbrook {

// Under sanitizers programs start slowly, take much memory, and may not be traced.
inline constexpr bool isSanitized = !std::string_view{TALLOWBROOK_SANITIZERS}.empty();

// The thread sanitizer ends a program that may write no byte to a file before its first own step.
inline constexpr unsigned smallestFileSizeLimit =
    std::string_view{TALLOWBROOK_SANITIZERS} == "thread" ? 1 : 0;

}  // namespace tallowbrook
