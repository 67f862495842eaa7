// Directories that a power cut does not take away again, with all that is in them.
#pragma once

#include <expected>
#include <filesystem>

#include "System/FileError.h"

namespace tallowbrook {

// As `TallowbrookPaths::ensureDirectory`; where the directory is missing it also waits until its
// name, and those of all it lies in, are on stable storage. Any thread.
[[nodiscard]] std::expected<void, FileError> ensureDirectoryOnDisk(
    const std::filesystem::path& directory);

}  // namespace tallowbrook
