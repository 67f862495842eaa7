// A new, empty directory for one test, gone with all it holds when this value is.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace tallowbrook {

class TemporaryDirectory {
 public:
    TemporaryDirectory() {
        std::string pattern = testing::TempDir() + "tallowbrook-test-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "no temporary directory";
        path = pattern;
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    std::filesystem::path path;
};

}  // namespace tallowbrook
