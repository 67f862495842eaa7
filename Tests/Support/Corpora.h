// Public files to test with, which are no part of this project. Tests are skipped where they are
// missing.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "Support/BuildPaths.h"

namespace tallowbrook {

namespace Corpora {

inline std::filesystem::path directory() {
    if (const char* named = std::getenv("TALLOWBROOK_CORPORA")) return named;
    return BuildPaths::defaultCorpora;
}

// The files of one collection, sorted; none where it is missing.
inline std::vector<std::filesystem::path> files(const std::filesystem::path& collection) {
    std::vector<std::filesystem::path> found;
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator{directory() / collection, missing})
        found.push_back(entry.path());
    std::ranges::sort(found);
    return found;
}

// The public JSON parsing test suite.
inline std::vector<std::filesystem::path> jsonSuite() {
    return files("json-test-suite/test_parsing");
}
inline constexpr int mandatorySuiteFiles = 283;

}  // namespace Corpora
}  // namespace tallowbrook
