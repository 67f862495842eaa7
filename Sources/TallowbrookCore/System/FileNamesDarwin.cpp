#include <stdio.h>

#include <cerrno>

#include "System/FileNames.h"

namespace tallowbrook {
namespace {

using std::filesystem::path;

std::expected<void, FileError> renameWith(const path& from, const path& to, unsigned flags) {
    if (renamex_np(from.c_str(), to.c_str(), flags) == 0) return {};
    const bool isUnsupported = errno == EINVAL || errno == ENOTSUP;
    return std::unexpected(FileError{"rename", isUnsupported ? ENOTSUP : errno});
}

}  // namespace

std::expected<void, FileError> FileNames::exchange(const path& one, const path& other) {
    return renameWith(one, other, RENAME_SWAP);
}

std::expected<void, FileError> FileNames::moveToFreeName(const path& file, const path& name) {
    return renameWith(file, name, RENAME_EXCL);
}

}  // namespace tallowbrook
