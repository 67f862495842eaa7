#include <copyfile.h>
#include <fcntl.h>

#include <cerrno>

#include "System/FileAttributes.h"
#include "System/FileDescriptor.h"

namespace tallowbrook {

std::expected<void, FileError> FileAttributes::copy(const std::filesystem::path& from, int to) {
    const FileDescriptor source{open(from.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    if (!source.isOpen()) return std::unexpected(FileError{"open", errno});
    if (fcopyfile(source.number(), to, nullptr, COPYFILE_ACL | COPYFILE_XATTR) == 0) return {};
    return std::unexpected(FileError{"fcopyfile", errno});
}

}  // namespace tallowbrook
