#include "EventBridge/TallowbrookPaths.h"

#include <sys/stat.h>

#include <cerrno>

namespace tallowbrook {
namespace {

constexpr mode_t ownerOnly = 0700;

// 0 when the location is a directory, else the reason why it is not.
int checkDirectory(const std::filesystem::path& location) {
    struct stat status{};
    if (stat(location.c_str(), &status) != 0) return errno;
    return S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
}

std::expected<void, FileError> makeDirectory(const std::filesystem::path& directory) {
    if (mkdir(directory.c_str(), ownerOnly) == 0) {
        // The umask may have taken bits away that the owner needs.
        if (chmod(directory.c_str(), ownerOnly) == 0) return {};
        return std::unexpected(FileError{"chmod", errno});
    }
    const int error = errno;
    // Another process may have made it in the meantime.
    if (error == EEXIST && checkDirectory(directory) == 0) return {};
    return std::unexpected(FileError{"mkdir", error});
}

}  // namespace

std::expected<void, FileError> TallowbrookPaths::ensureDirectory(
    const std::filesystem::path& directory) {
    const int state = checkDirectory(directory);
    if (state == 0) return {};
    if (state != ENOENT) return std::unexpected(FileError{"stat", state});

    // "a/b/" has the parent "a/b", which is the same directory.
    const auto parent = directory.parent_path();
    if (!parent.empty() && parent != directory)
        if (auto made = ensureDirectory(parent); !made) return made;
    return makeDirectory(directory);
}

}  // namespace tallowbrook
