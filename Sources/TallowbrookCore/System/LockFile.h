// A file that exists to be locked, see flock(2): opened, and found to be still the one that others
// would lock.
//
// Never waits. Safe from any thread.
#pragma once

#include <expected>
#include <filesystem>

#include "System/FileDescriptor.h"
#include "System/FileError.h"

namespace tallowbrook::LockFile {

// Opens the file for reading and writing. A missing one is created with mode 0600 whatever the
// umask; an existing one keeps its mode. Fails with "open", or with "fchmod".
[[nodiscard]] std::expected<FileDescriptor, FileError> open(const std::filesystem::path& file);

enum class Place {
    kept,  // the path still leads to the open file
    lost,  // it was deleted or replaced: a lock on it keeps nobody out
};

// To be asked with the lock held. Fails with "open", EINVAL when it is no regular file.
[[nodiscard]] std::expected<Place, FileError> placeOf(const FileDescriptor& opened,
                                                      const std::filesystem::path& file);

}  // namespace tallowbrook::LockFile
