#include "EventBridge/DirectoryOnDisk.h"

#include <system_error>

#include "EventBridge/TallowbrookPaths.h"
#include "System/ReplacementFile.h"

namespace tallowbrook {

std::expected<void, FileError> ensureDirectoryOnDisk(const std::filesystem::path& directory) {
    std::error_code ignored;
    const bool isNew = !std::filesystem::exists(directory, ignored);
    if (auto made = TallowbrookPaths::ensureDirectory(directory); !made) return made;
    // Up to the root: a helper that made the home has not waited for the disk.
    if (isNew) syncNamesUpTo(directory);
    return {};
}

}  // namespace tallowbrook
