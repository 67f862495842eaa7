// Whole files in and out, for tests that look at what was written.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace tallowbrook {

// Empty when the file cannot be read.
inline std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream stream{file, std::ios::binary};
    return {std::istreambuf_iterator<char>{stream}, {}};
}

// Makes the file, and the directories it lies in, or replaces what it holds.
inline void writeContents(const std::filesystem::path& file, std::string_view contents) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream{file, std::ios::binary | std::ios::trunc};
    stream.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    stream.close();
    if (!stream) ADD_FAILURE() << "cannot write " << file;
}

// Makes the file, and the directories it lies in, with `size` zero bytes that take no room.
inline void writeZeros(const std::filesystem::path& file, std::uintmax_t size) {
    writeContents(file, "");
    std::filesystem::resize_file(file, size);
}

}  // namespace tallowbrook
