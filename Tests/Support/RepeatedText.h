// Long texts for tests.
#pragma once

#include <string>
#include <string_view>

namespace tallowbrook {

inline std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

}  // namespace tallowbrook
