#include "System/ReplacementFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "System/FileAttributes.h"
#include "System/FileContents.h"

namespace tallowbrook {
namespace {

std::expected<void, FileError> outcome(int result, const char* step) {
    if (result == 0) return {};
    return std::unexpected(FileError{step, errno});
}

}  // namespace

std::expected<ReplacementFile, FileError> ReplacementFile::create(std::filesystem::path location) {
    // O_EXCL follows no link: no other program can choose the file that is written.
    FileDescriptor file{open(location.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)};
    if (!file.isOpen()) return std::unexpected(FileError{"open", errno});
    ReplacementFile made{std::move(location), std::move(file)};
    // The umask may have taken bits away.
    if (auto set = made.setMode(0600); !set) return std::unexpected(set.error());
    return made;
}

ReplacementFile::ReplacementFile(std::filesystem::path location, FileDescriptor file)
    : location_{std::move(location)}, file_{std::move(file)} {}

ReplacementFile::ReplacementFile(ReplacementFile&& other) noexcept
    : location_{std::exchange(other.location_, {})},
      file_{std::move(other.file_)},
      isSynced_{other.isSynced_} {}

ReplacementFile::~ReplacementFile() {
    if (!location_.empty()) unlink(location_.c_str());
}

std::expected<void, FileError> ReplacementFile::write(std::string_view bytes) {
    return FileContents::write(file_.number(), bytes);
}

std::expected<void, FileError> ReplacementFile::setOwner(uid_t user, gid_t group) {
    struct stat status{};
    if (fstat(file_.number(), &status) != 0) return std::unexpected(FileError{"fstat", errno});
    // Some file systems refuse every change of the owner, even to the present one.
    if (status.st_uid == user && status.st_gid == group) return {};
    return outcome(fchown(file_.number(), user, group), "fchown");
}

std::expected<void, FileError> ReplacementFile::takeAttributes(const std::filesystem::path& other) {
    return FileAttributes::copy(other, file_.number());
}

std::expected<void, FileError> ReplacementFile::setMode(mode_t mode) {
    return outcome(fchmod(file_.number(), mode), "fchmod");
}

std::expected<void, FileError> ReplacementFile::sync() {
    if (auto done = outcome(fsync(file_.number()), "fsync"); !done) return done;
    isSynced_ = true;
    return {};
}

std::expected<void, FileError> ReplacementFile::replace(const std::filesystem::path& target) {
    if (auto renamed = outcome(std::rename(location_.c_str(), target.c_str()), "rename"); !renamed)
        return renamed;
    // The name belongs to another file from here on, which must not be removed.
    location_.clear();
    if (isSynced_) syncDirectory(target.parent_path());
    return {};
}

// That a name has changed survives a power failure only when its directory was written too. Some
// file systems cannot do that on demand; the names are right all the same.
void syncDirectory(const std::filesystem::path& directory) {
    const auto* name = directory.empty() ? "." : directory.c_str();
    const FileDescriptor opened{open(name, O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    if (opened.isOpen()) fsync(opened.number());
}

void syncNamesUpTo(const std::filesystem::path& location) {
    for (auto at = location; at.has_relative_path(); at = at.parent_path())
        syncDirectory(at.parent_path());
}

void ReplacementFile::keep() {
    if (isSynced_) syncDirectory(location_.parent_path());
    location_.clear();
}

std::filesystem::path ReplacementFile::release() { return std::exchange(location_, {}); }

}  // namespace tallowbrook
