// A file system of a few kilobytes at the place of a test's home, so that there is really no room.
//
// It is seen by this process and its children alone, and gone with them.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace tallowbrook {

class SmallDisk {
 public:
    // Why a test that needs one must be skipped; absent where it can be had.
    static std::optional<std::string> reasonToSkip();

    // Makes the directory if need be. What it holds is hidden.
    SmallDisk(std::filesystem::path directory, std::size_t bytes);
    ~SmallDisk();
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    // Changes its size; what it holds stays and must fit.
    void resize(std::size_t bytes) const;

    // How much of it is taken.
    std::size_t used() const;

 private:
    std::filesystem::path directory_;
};

}  // namespace tallowbrook
