// How these tests were built.
#pragma once

#include <string_view>

namespace tallowbrook {

// Under sanitizers programs start slowly, take much memory, and may not be traced.
inline constexpr bool isSanitized = !std::string_view{TALLOWBROOK_SANITIZERS}.empty();

}  // namespace tallowbrook
