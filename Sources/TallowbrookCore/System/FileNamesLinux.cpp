#include <fcntl.h>

#include <cerrno>
#include <cstdio>

#include "System/FileNames.h"

namespace tallowbrook {
namespace {

using std::filesystem::path;

std::expected<void, FileError> renameWith(const path& from, const path& to, unsigned flags) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0) return {};
    // A file system without these flags says EINVAL, an older kernel ENOSYS.
    const bool isUnsupported = errno == EINVAL || errno == ENOSYS;
    return std::unexpected(FileError{"rename", isUnsupported ? ENOTSUP : errno});
}

}  // namespace

std::expected<void, FileError> FileNames::exchange(const path& one, const path& other) {
    return renameWith(one, other, RENAME_EXCHANGE);
}

std::expected<void, FileError> FileNames::moveToFreeName(const path& file, const path& name) {
    return renameWith(file, name, RENAME_NOREPLACE);
}

}  // namespace tallowbrook
