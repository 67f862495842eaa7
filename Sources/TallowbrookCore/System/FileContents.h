// Whole files in and out, by POSIX open(2), read(2) and write(2).
//
// Safe from any thread.
#pragma once

#include <cstddef>
#include <expected>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>

#include "System/FileError.h"

namespace tallowbrook::FileContents {

// All bytes of a regular file. Never waits: a pipe or device in its place is refused with EINVAL, a
// directory with EISDIR. Fails with EFBIG when there are more than `maxBytes`, and with ENOMEM when
// the system gives no memory for the file.
[[nodiscard]] std::expected<std::string, FileError> read(
    const std::filesystem::path& file,
    std::size_t maxBytes = std::numeric_limits<std::size_t>::max());

// Writes all of the bytes to an open descriptor, however many calls that takes. After a failure a
// part of them may have been written.
[[nodiscard]] std::expected<void, FileError> write(int descriptor, std::string_view bytes);

}  // namespace tallowbrook::FileContents
