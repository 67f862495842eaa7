// What lies in a directory, for tests that look at what was left there.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace tallowbrook {

// The names of all entries, hidden ones too, sorted; none where there is no directory.
inline std::vector<std::string> namesIn(const std::filesystem::path& directory) {
    std::vector<std::string> names;
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator{directory, missing})
        names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
}

}  // namespace tallowbrook
