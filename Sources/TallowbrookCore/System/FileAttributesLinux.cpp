#include <sys/xattr.h>

#include <cerrno>
#include <string>
#include <string_view>

#include "System/FileAttributes.h"
#include "Text/TakeUntil.h"

namespace tallowbrook {
namespace {

using std::filesystem::path;

// Of a list of names and of a value alike, see xattr(7).
constexpr std::size_t longest = 65'536;
constexpr const char* accessControlList = "system.posix_acl_access";

std::expected<std::string, FileError> namesOf(const path& file) {
    std::string names(longest, '\0');
    const ssize_t length = listxattr(file.c_str(), names.data(), names.size());
    if (length < 0 && errno == ENOTSUP) return std::string{};
    if (length < 0) return std::unexpected(FileError{"listxattr", errno});
    names.resize(static_cast<std::size_t>(length));
    return names;
}

// The system's own labels, which it gives to each file by its own rules.
bool isLabel(std::string_view name) {
    return name.starts_with("security.") || name.starts_with("trusted.");
}

std::expected<void, FileError> copyOne(const path& from, int to, const std::string& name) {
    std::string value(longest, '\0');
    const ssize_t length = getxattr(from.c_str(), name.c_str(), value.data(), value.size());
    if (length < 0) return std::unexpected(FileError{"getxattr", errno});
    value.resize(static_cast<std::size_t>(length));
    if (fsetxattr(to, name.c_str(), value.data(), value.size(), 0) == 0) return {};
    return std::unexpected(FileError{"fsetxattr", errno});
}

}  // namespace

std::expected<void, FileError> FileAttributes::copy(const path& from, int to) {
    const auto names = namesOf(from);
    if (!names) return std::unexpected(names.error());
    // Where the file system has no such lists there is none to remove.
    fremovexattr(to, accessControlList);
    std::string_view rest = *names;
    while (!rest.empty()) {
        const std::string name{takeUntil(rest, '\0')};
        const auto copied = copyOne(from, to, name);
        if (!copied && !isLabel(name)) return copied;
    }
    return {};
}

}  // namespace tallowbrook
