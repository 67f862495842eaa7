#include "Integrations/ConfigFileSwap.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>

#include "Domain/UUID.h"
#include "System/DirectoryListing.h"
#include "System/FileContents.h"
#include "System/FileNames.h"
#include "System/ReplacementFile.h"

namespace tallowbrook {
namespace {

using std::filesystem::path;

constexpr std::string_view mark = ".tallowbrook-";
constexpr std::size_t uuidLength = 36;
// Ours until it has this name; from then on it may be what somebody else wrote.
constexpr std::string_view unfinished = ".tmp";
constexpr std::string_view exchanged = ".old";
constexpr std::chrono::minutes leftoverAge{1};

std::unexpected<ConfigFileError> notWritten(const path& target, const FileError& error) {
    return std::unexpected(ConfigFileError::writeFailed(target, error.reason()));
}

std::expected<void, FileError> renameOver(const path& from, const path& to) {
    if (std::rename(from.c_str(), to.c_str()) == 0) return {};
    return std::unexpected(FileError{"rename", errno});
}

// Absent when it cannot be told.
std::optional<ino_t> inodeOf(const path& file) {
    struct stat status{};
    if (lstat(file.c_str(), &status) != 0) return std::nullopt;
    return status.st_ino;
}

// The file that was swapped in, with its text and inode.
struct Ours {
    std::string_view text;
    std::optional<ino_t> inode;

    // By the text, since others may have written into it; absent when it cannot be told.
    std::optional<bool> isAt(const path& file) const {
        if (const auto present = FileContents::read(file)) return *present == text;
        const auto present = inodeOf(file);
        if (!present || !inode) return std::nullopt;
        return *present == *inode;
    }
};

// Gives the target back what came out under the name `aside`.
std::expected<void, FileError> putBack(const path& aside, const path& target, const Ours& ours) {
    if (auto done = FileNames::exchange(aside, target); !done) return done;
    const auto isOurs = ours.isAt(aside);
    if (!isOurs) return {};
    // Somebody has written once more in between: theirs is the newest.
    if (!*isOurs) return FileNames::exchange(aside, target);
    unlink(aside.c_str());
    return {};
}

std::expected<void, ConfigFileError> swapWithPlanned(const path& made, const path& target,
                                                     std::string_view planned,
                                                     std::string_view proposed) {
    path aside = made;
    aside.replace_extension(exchanged);
    const Ours ours{proposed, inodeOf(made)};
    if (auto done = renameOver(made, aside); !done) {
        unlink(made.c_str());
        return notWritten(target, done.error());
    }
    auto done = FileNames::exchange(aside, target);
    const bool isExchanged = done.has_value();
    if (!done && done.error().errorNumber == ENOTSUP) done = renameOver(aside, target);
    if (!done) {
        unlink(aside.c_str());
        if (done.error().errorNumber == ENOENT)  // the file has been deleted
            return std::unexpected(ConfigFileError::changedSincePlan(target));
        return notWritten(target, done.error());
    }
    if (!isExchanged) return {};
    const auto cameOut = FileContents::read(aside);
    if (cameOut && *cameOut == planned) {
        // Before the old file goes, the disk has to know that the new one has its name.
        syncDirectory(target.parent_path());
        unlink(aside.c_str());
        return {};
    }
    if (auto back = putBack(aside, target, ours); !back) return notWritten(target, back.error());
    if (cameOut) return std::unexpected(ConfigFileError::changedSincePlan(target));
    return std::unexpected(ConfigFileError::unreadable(target, cameOut.error().reason()));
}

std::expected<void, ConfigFileError> moveIntoFreePlace(const path& made, const path& target) {
    auto done = FileNames::moveToFreeName(made, target);
    if (!done && done.error().errorNumber == ENOTSUP) done = renameOver(made, target);
    if (done) return {};
    unlink(made.c_str());
    if (done.error().errorNumber == EEXIST)
        return std::unexpected(ConfigFileError::changedSincePlan(target));
    return notWritten(target, done.error());
}

bool isOurName(const path& file, std::string_view extension) {
    const std::string stem = file.stem().string();
    if (file.extension() != extension || !stem.starts_with('.') || stem.size() < uuidLength)
        return false;
    const std::string_view uuid = std::string_view{stem}.substr(stem.size() - uuidLength);
    const std::string_view before = std::string_view{stem}.substr(0, stem.size() - uuidLength);
    return before.ends_with(mark) && UUIDText::parse(uuid).has_value();
}

// A change that goes on has a younger one.
bool isLeftOver(const path& file, Instant now) {
    struct stat status{};
    return lstat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           status.st_uid == geteuid() &&
           now - Instant{std::chrono::seconds{status.st_ctime}} > leftoverAge;
}

bool isKeptIn(const path& backups, const path& file) {
    const auto bytes = FileContents::read(file);
    return bytes && std::ranges::any_of(listDirectory(backups), [&](const path& backup) {
               return FileContents::read(backup) == bytes;
           });
}

}  // namespace

path ConfigFileSwap::unfinishedName(const path& target, std::string_view uuid) {
    std::string name = "." + target.filename().string();
    return target.parent_path() / name.append(mark).append(uuid).append(unfinished);
}

std::expected<void, ConfigFileError> ConfigFileSwap::swapIn(
    const path& made, const path& target, const std::optional<std::string>& planned,
    std::string_view proposed) {
    auto done = planned ? swapWithPlanned(made, target, *planned, proposed)
                        : moveIntoFreePlace(made, target);
    if (done) syncDirectory(target.parent_path());
    return done;
}

void ConfigFileSwap::removeLeftovers(const path& target, const path& backups, Instant now) {
    const path directory = target.has_parent_path() ? target.parent_path() : path{"."};
    for (const auto& file : listDirectory(directory)) {
        const bool isOurs = isOurName(file, unfinished);
        if (!isOurs && !isOurName(file, exchanged)) continue;
        if (isLeftOver(file, now) && (isOurs || isKeptIn(backups, file))) unlink(file.c_str());
    }
}

}  // namespace tallowbrook
