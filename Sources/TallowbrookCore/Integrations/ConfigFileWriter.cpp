#include "Integrations/ConfigFileWriter.h"

#include <sys/stat.h>

#include <cerrno>
#include <string_view>
#include <utility>

#include "Domain/UUID.h"
#include "EventBridge/DirectoryOnDisk.h"
#include "Integrations/ConfigFileSwap.h"
#include "Integrations/LineDiff.h"
#include "System/FileContents.h"
#include "System/RandomHex.h"
#include "System/ReplacementFile.h"
#include "Text/UTF8.h"

namespace tallowbrook {
namespace {

using std::filesystem::path;

constexpr std::size_t diffContext = 2;
// With set-user-ID, set-group-ID and sticky bits: a file of the user keeps every one it has.
constexpr mode_t permissionBits = 07777;

// Where a file stands in the place of a directory, none lies behind it.
bool meansNoFile(int errorNumber) { return errorNumber == ENOENT || errorNumber == ENOTDIR; }

// That a change was made is said of the file that the user knows, which may be a link.
ConfigFileError named(const ConfigFileError& error, const path& file) {
    const bool isChanged = std::holds_alternative<ConfigFileError::ChangedSincePlan>(error.reason);
    return isChanged ? ConfigFileError::changedSincePlan(file) : error;
}

// On stable storage before anything is replaced: after a power cut one of the two texts is whole.
std::expected<void, FileError> writeBackup(std::string_view bytes, const path& backup) {
    auto copy = ReplacementFile::create(backup);
    if (!copy) return std::unexpected(copy.error());
    if (auto done = copy->write(bytes); !done) return done;
    if (auto done = copy->sync(); !done) return done;
    copy->keep();
    return {};
}

std::expected<path, ConfigFileError> makeBackup(std::string_view bytes, const path& file,
                                                const path& directory, Instant now) {
    const auto failure = [](const path& location, const FileError& error) {
        return std::unexpected(ConfigFileError::writeFailed(location, error.reason()));
    };
    // Two changes within one second must not meet in one name.
    const auto digits = randomHex32();
    if (!digits) return failure(directory, digits.error());
    auto backup = directory / (file.filename().string() + "." + ConfigFileWriter::backupStamp(now) +
                               "." + *digits + ".bak");
    if (auto made = ensureDirectoryOnDisk(directory); !made) return failure(backup, made.error());
    if (auto written = writeBackup(bytes, backup); !written)
        return failure(backup, written.error());
    return backup;
}

// An agent that has never been configured may not have its directory yet.
std::expected<void, FileError> ensureParent(const path& file) {
    if (!file.has_parent_path()) return {};  // it lies in the current directory
    return ensureDirectoryOnDisk(file.parent_path());
}

// A new file with these bytes beside the target, complete and on stable storage.
std::expected<ReplacementFile, FileError> prepareFile(std::string_view data, const path& target,
                                                      const path& source) {
    struct stat status{};
    const bool hasSource = stat(source.c_str(), &status) == 0;
    // A mode that cannot be learned must not be guessed: it may keep others from reading secrets.
    if (!hasSource && errno != ENOENT) return std::unexpected(FileError{"stat", errno});

    // In the target's own directory, since no rename crosses file systems; and hidden, so that an
    // agent that lists its directory passes over it.
    const auto uuid = randomUUID();
    if (!uuid) return std::unexpected(uuid.error());
    auto file =
        ReplacementFile::create(ConfigFileSwap::unfinishedName(target, UUIDText::text(*uuid)));
    if (!file) return file;
    if (auto done = file->write(data); !done) return std::unexpected(done.error());
    // The owner first, the mode last: a change of owner takes set-user-ID bits away, and without
    // its access control list the file would be open to its group.
    if (hasSource) {
        if (auto done = file->setOwner(status.st_uid, status.st_gid); !done)
            return std::unexpected(done.error());
        if (auto done = file->takeAttributes(source); !done) return std::unexpected(done.error());
        if (auto done = file->setMode(status.st_mode & permissionBits); !done)
            return std::unexpected(done.error());
    }
    if (auto done = file->sync(); !done) return std::unexpected(done.error());
    return file;
}

}  // namespace

std::expected<path, FileError> ConfigFileWriter::resolve(const path& location) {
    // As many as the kernel follows. Step by step, since std::filesystem::canonical wants the last
    // file to exist.
    constexpr int maxLinks = 40;
    path resolved = location;
    for (int links = 0; links < maxLinks; ++links) {
        std::error_code error;
        const path target = std::filesystem::read_symlink(resolved, error);
        const bool isNoLink = error == std::errc::invalid_argument;
        if (isNoLink || meansNoFile(error.value())) return resolved;
        if (error) return std::unexpected(FileError{"readlink", error.value()});
        // A relative target counts from the directory of its link.
        resolved = resolved.parent_path() / target;
    }
    return std::unexpected(FileError{"readlink", ELOOP});
}

std::uint64_t ConfigFileWriter::otherNames(const path& location) {
    struct stat status{};
    if (stat(location.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return 0;
    return status.st_nlink > 1 ? status.st_nlink - 1 : 0;
}

std::expected<std::optional<std::string>, ConfigFileError> ConfigFileWriter::readText(
    const path& location) {
    auto bytes = FileContents::read(location);
    if (!bytes && meansNoFile(bytes.error().errorNumber)) return std::nullopt;
    if (!bytes)
        return std::unexpected(ConfigFileError::unreadable(location, bytes.error().reason()));
    if (!UTF8::isValid(*bytes)) return std::unexpected(ConfigFileError::notUTF8(location));
    return std::move(*bytes);
}

std::expected<ConfigChangePlan, ConfigPlanError> ConfigFileWriter::plan(
    const path& fileURL, const Transform& transform) {
    auto original = readText(fileURL);
    if (!original) return std::unexpected(ConfigPlanError{original.error()});
    auto proposed = transform(*original);
    if (!proposed) return std::unexpected(ConfigPlanError{proposed.error()});
    // A path in it may have any bytes; written, it would make the file unreadable to its agent.
    if (*proposed && !UTF8::isValid(**proposed))
        return std::unexpected(ConfigPlanError{
            ConfigFileError::writeFailed(fileURL, FileError{"encode", EILSEQ}.reason())});
    auto diff =
        LineDiff::unified(*original, *proposed, fileURL.string(), fileURL.string(), diffContext);
    return ConfigChangePlan{fileURL, std::move(*original), std::move(*proposed),
                            std::move(diff).value_or("")};
}

std::expected<std::optional<path>, ConfigFileError> ConfigFileWriter::apply(
    const ConfigChangePlan& plan, const path& backupDirectory, Instant now) {
    if (!plan.proposedText) return std::nullopt;
    // A rename does not follow links: without this the link itself would be replaced.
    const auto target = resolve(plan.fileURL);
    if (!target)
        return std::unexpected(ConfigFileError::unreadable(plan.fileURL, target.error().reason()));
    const auto failure = [&](const FileError& error) {
        return std::unexpected(ConfigFileError::writeFailed(*target, error.reason()));
    };
    // By the text and not by the time of change: two changes may fall into one tick of the clock.
    const auto isUnchanged = [&]() -> std::expected<void, ConfigFileError> {
        const auto current = readText(*target);
        if (!current) return std::unexpected(current.error());
        if (*current == plan.originalText) return {};
        return std::unexpected(ConfigFileError::changedSincePlan(plan.fileURL));
    };
    if (auto holds = isUnchanged(); !holds) return std::unexpected(holds.error());

    std::optional<path> backup;
    if (plan.originalText) {
        auto made = makeBackup(*plan.originalText, *target, backupDirectory, now);
        if (!made) return std::unexpected(made.error());
        backup = *made;
    } else if (auto made = ensureParent(*target); !made) {
        return failure(made.error());
    }
    ConfigFileSwap::removeLeftovers(*target, backupDirectory, now);
    auto file = prepareFile(*plan.proposedText, *target, *target);
    if (!file) return failure(file.error());
    // Most changes of others are found here, before the target is touched.
    if (auto holds = isUnchanged(); !holds) return std::unexpected(holds.error());
    if (auto done =
            ConfigFileSwap::swapIn(file->release(), *target, plan.originalText, *plan.proposedText);
        !done)
        return std::unexpected(named(done.error(), plan.fileURL));
    return backup;
}

std::string ConfigFileWriter::backupStamp(Instant date) {
    constexpr std::size_t digitsAndT = 15;
    auto text = EventDate::text(date);
    std::erase_if(text, [](char c) { return c == '-' || c == ':'; });
    return text.substr(0, digitsAndT) + "Z";
}

std::expected<void, ConfigFileError> ConfigFileWriter::writeAtomically(std::string_view data,
                                                                       const path& target,
                                                                       const path& source) {
    const auto failure = [&](const FileError& error) {
        return std::unexpected(ConfigFileError::writeFailed(target, error.reason()));
    };
    auto file = prepareFile(data, target, source);
    if (!file) return failure(file.error());
    if (auto done = file->replace(target); !done) return failure(done.error());
    return {};
}

}  // namespace tallowbrook
