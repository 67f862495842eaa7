#include "System/LockFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace tallowbrook {
namespace {

// Some systems make the opening of a pipe wait, though it is opened for both directions.
constexpr int flags = O_RDWR | O_NONBLOCK | O_CLOEXEC;
constexpr mode_t ownerOnly = 0600;

}  // namespace

std::expected<FileDescriptor, FileError> LockFile::open(const std::filesystem::path& file) {
    // In the order of what is likely: the file is made once in the life of a home.
    FileDescriptor opened{::open(file.c_str(), flags)};
    if (!opened.isOpen() && errno == ENOENT) {
        opened = FileDescriptor{::open(file.c_str(), flags | O_CREAT | O_EXCL, ownerOnly)};
        // Without the bits that a umask takes away the owner could never open it again.
        if (opened.isOpen() && fchmod(opened.number(), ownerOnly) != 0)
            return std::unexpected(FileError{"fchmod", errno});
        // Another process was faster, or there is a link to a file that is missing.
        if (!opened.isOpen() && errno == EEXIST)
            opened = FileDescriptor{::open(file.c_str(), flags | O_CREAT, ownerOnly)};
    }
    if (!opened.isOpen()) return std::unexpected(FileError{"open", errno});
    return opened;
}

std::expected<LockFile::Place, FileError> LockFile::placeOf(const FileDescriptor& opened,
                                                            const std::filesystem::path& file) {
    struct stat own{};
    struct stat present{};
    // What cannot be told is taken for lost: the caller opens the file again.
    if (fstat(opened.number(), &own) != 0) return Place::lost;
    if (!S_ISREG(own.st_mode)) return std::unexpected(FileError{"open", EINVAL});
    if (stat(file.c_str(), &present) != 0) return Place::lost;
    const bool isSame = own.st_dev == present.st_dev && own.st_ino == present.st_ino;
    return isSame ? Place::kept : Place::lost;
}

}  // namespace tallowbrook
