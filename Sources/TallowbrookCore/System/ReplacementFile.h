// A new file that is made beside the one it is to replace.
//
// Other programs see the old file or the new one, never a part: the new one takes the name only
// when it is complete, by POSIX rename(2). An operation that fails leaves the file to be removed
// with this value, and names the system call as the step. Used by one thread at a time.
#pragma once

#include <sys/types.h>

#include <expected>
#include <filesystem>
#include <string_view>

#include "System/FileDescriptor.h"
#include "System/FileError.h"

namespace tallowbrook {

class ReplacementFile {
 public:
    // An empty file with mode 0600, whatever the umask. Fails with "open", EEXIST when there is
    // something of that name, or with "fchmod".
    [[nodiscard]] static std::expected<ReplacementFile, FileError> create(
        std::filesystem::path location);

    ReplacementFile(ReplacementFile&& other) noexcept;
    ReplacementFile& operator=(ReplacementFile&&) = delete;
    ~ReplacementFile();  // removes the file unless it was kept or took the target's place

    // All of the bytes, behind those written before. Fails with "write".
    [[nodiscard]] std::expected<void, FileError> write(std::string_view bytes);

    // Does nothing where the file belongs to them already. Fails with "fstat" or "fchown".
    [[nodiscard]] std::expected<void, FileError> setOwner(uid_t user, gid_t group);
    // Takes the access control list and the extended attributes of another file. To be followed by
    // `setMode`. Fails as `FileAttributes::copy` does.
    [[nodiscard]] std::expected<void, FileError> takeAttributes(const std::filesystem::path& other);
    // Fails with "fchmod".
    [[nodiscard]] std::expected<void, FileError> setMode(mode_t mode);

    // Waits until what was written is on stable storage, POSIX fsync(2), as the file's name will be
    // after `replace` or `keep`. Fails with "fsync".
    [[nodiscard]] std::expected<void, FileError> sync();

    // Takes the place of the target, which must be on the same file system. Fails with "rename".
    // After `sync` it waits for the directory to be written too. Nothing may be called after a
    // success.
    [[nodiscard]] std::expected<void, FileError> replace(const std::filesystem::path& target);

    // Leaves the file where it is, under its own name. After `sync` it waits for the directory to
    // be written too. Nothing may be called after it.
    void keep();

    // As `keep`, but waits for nothing. Gives the location.
    std::filesystem::path release();

 private:
    ReplacementFile(std::filesystem::path location, FileDescriptor file);

    std::filesystem::path location_;  // empty once the file is not ours to remove
    FileDescriptor file_;
    bool isSynced_ = false;
};

// Waits until the names in a directory are on stable storage, where the system can do that; an
// empty path is the current directory.
void syncDirectory(const std::filesystem::path& directory);

// Waits so for the name of a file or directory, and for those of all the directories it lies in.
void syncNamesUpTo(const std::filesystem::path& location);

}  // namespace tallowbrook
