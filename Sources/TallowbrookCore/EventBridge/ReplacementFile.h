// A new file that is made beside the one it is to replace.
//
// Whoever looks sees the old file or the new one, never a part: the new one takes the name only
// when it is complete, by POSIX rename(2). Used by one thread at a time.
#pragma once

#include <sys/types.h>

#include <expected>
#include <filesystem>
#include <string_view>

#include "Domain/FileError.h"
#include "EventBridge/FileDescriptor.h"

namespace tallowbrook {

class ReplacementFile {
 public:
    // An empty file with mode 0600. Fails with EEXIST when there is something of that name.
    [[nodiscard]] static std::expected<ReplacementFile, FileError> create(
        std::filesystem::path location);

    ReplacementFile(ReplacementFile&& other) noexcept;
    ReplacementFile& operator=(ReplacementFile&&) = delete;
    ~ReplacementFile();  // removes the file unless it was kept

    [[nodiscard]] std::expected<void, FileError> write(std::string_view bytes);

    // Does nothing where the file belongs to them already.
    [[nodiscard]] std::expected<void, FileError> setOwner(uid_t user, gid_t group);
    [[nodiscard]] std::expected<void, FileError> setMode(mode_t mode);

    // Waits until what was written is on stable storage, POSIX fsync(2).
    [[nodiscard]] std::expected<void, FileError> sync();

    // Takes the place of the target, which must be on the same file system.
    [[nodiscard]] std::expected<void, FileError> replace(const std::filesystem::path& target);

    // Leaves the file where it is, under its own name.
    void keep();

 private:
    ReplacementFile(std::filesystem::path location, FileDescriptor file);

    std::filesystem::path location_;  // empty once the file is not ours to remove
    FileDescriptor file_;
};

}  // namespace tallowbrook
