// What a file has beside its bytes, mode and owner: its access control list and its extended
// attributes, see acl(5), xattr(7), and copyfile(3) on macOS. Safe from any thread.
#pragma once

#include <expected>
#include <filesystem>

#include "System/FileError.h"

namespace tallowbrook::FileAttributes {

// Gives an open file those of another one, which a mode set afterwards does not widen. An access
// control list that the open file has from its directory is taken away where the other has none.
// Labels that the system itself gives to files are kept where it lets them be, and are no reason to
// fail. Fails with the system call that did; then a part of them may be there.
[[nodiscard]] std::expected<void, FileError> copy(const std::filesystem::path& from, int to);

}  // namespace tallowbrook::FileAttributes
