#include "System/FileContents.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>

#include "System/FileDescriptor.h"

namespace tallowbrook {
namespace {

std::expected<std::string, FileError> readToEnd(int file, std::size_t expectedSize,
                                                std::size_t maxBytes) {
    // One byte more than the file holds, so that the end of it is met without growing. The size is
    // only a first guess: the file may grow while it is read.
    std::string bytes(expectedSize + 1, '\0');
    std::size_t length = 0;
    while (true) {
        const ssize_t count = ::read(file, bytes.data() + length, bytes.size() - length);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::unexpected(FileError{"read", errno});
        if (count == 0) break;
        length += static_cast<std::size_t>(count);
        if (length > maxBytes) return std::unexpected(FileError{"read", EFBIG});
        if (length == bytes.size()) bytes.resize(2 * length);
    }
    bytes.resize(length);
    return bytes;
}

}  // namespace

std::expected<std::string, FileError> FileContents::read(const std::filesystem::path& file,
                                                         std::size_t maxBytes) {
    // Without O_NONBLOCK the opening of a pipe waits for a writer that may never come.
    const FileDescriptor opened{open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    struct stat status{};
    if (!opened.isOpen() || fstat(opened.number(), &status) != 0)
        return std::unexpected(FileError{"open", errno});
    if (S_ISDIR(status.st_mode)) return std::unexpected(FileError{"read", EISDIR});
    if (!S_ISREG(status.st_mode)) return std::unexpected(FileError{"read", EINVAL});
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > maxBytes) return std::unexpected(FileError{"read", EFBIG});
    try {
        return readToEnd(opened.number(), size, maxBytes);
    } catch (const std::exception&) {  // there is no memory for it
        return std::unexpected(FileError{"read", ENOMEM});
    }
}

std::expected<void, FileError> FileContents::write(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        // A file system that is nearly full takes a part; the next call says why.
        if (written >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            return std::unexpected(FileError{"write", errno});
    }
    return {};
}

}  // namespace tallowbrook
