// Changes to the names of files that take nothing away, and are done at once for all who look:
// renameat2(2) on Linux, renamex_np(2) on macOS. Safe from any thread.
//
// Both fail with "rename" and ENOTSUP where the system or the file system cannot do that.
#pragma once

#include <expected>
#include <filesystem>

#include "System/FileError.h"

namespace tallowbrook::FileNames {

// Each of two files gets the other's name. Both must be there, on one file system.
[[nodiscard]] std::expected<void, FileError> exchange(const std::filesystem::path& one,
                                                      const std::filesystem::path& other);

// Fails with EEXIST where there is something of the new name.
[[nodiscard]] std::expected<void, FileError> moveToFreeName(const std::filesystem::path& file,
                                                            const std::filesystem::path& name);

}  // namespace tallowbrook::FileNames
