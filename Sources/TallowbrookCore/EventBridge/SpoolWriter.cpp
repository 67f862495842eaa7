#include "EventBridge/SpoolWriter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "Domain/EventCoding.h"
#include "EventBridge/SpoolFileName.h"
#include "EventBridge/SpoolLock.h"
#include "System/FileContents.h"
#include "System/FileDescriptor.h"

namespace tallowbrook {
namespace {

constexpr mode_t ownerOnly = 0600;

// A file just made under a umask that takes them: it could not be opened again, by writer or
// reader.
bool lacksOwnersBits(const struct stat& status) {
    return status.st_size == 0 && (status.st_mode & ownerOnly) != ownerOnly;
}

// A torn line would swallow the next event. The caller still holds the lock, so no other helper
// wrote behind it; where even this fails, the reader counts one invalid line and goes on.
void undoAppend(const std::filesystem::path& file, std::int64_t length) {
    [[maybe_unused]] const int result = truncate(file.c_str(), length);
}

// Without a host the spool would grow for as long as agents run.
void deleteOldestOverflow(const std::filesystem::path& directory, int keep) {
    auto segments = SpoolFileName::pendingFiles(directory);
    std::erase_if(segments, [](const SpoolFileName::Entry& entry) {
        return entry.prefix != SpoolFileName::Prefix::overflow;
    });
    for (std::size_t i = 0; i + static_cast<std::size_t>(keep) < segments.size(); ++i)
        unlink(segments[i].url.c_str());
}

}  // namespace

std::expected<void, SpoolAccessError> SpoolWriter::append(const AgentEvent& event) const {
    const std::string line = EventCoding::encodeLine(event);
    if (line.size() > configuration.maxLineBytes)
        return std::unexpected(SpoolError::lineTooLarge(line.size()));

    if (auto made = TallowbrookPaths::ensureDirectory(paths.spoolDirectory()); !made)
        return std::unexpected(made.error());
    const auto lock = SpoolLock::acquire(paths, configuration.lockTimeout);
    if (!lock) return std::unexpected(lock.error());
    const auto length = rotateIfNeeded(static_cast<std::int64_t>(line.size()));
    if (!length) return std::unexpected(length.error());

    const auto appended = appendBytes(line, paths.activeSpoolFile());
    if (appended) return {};
    if (*length) undoAppend(paths.activeSpoolFile(), **length);
    return std::unexpected(appended.error());
}

std::expected<std::optional<std::int64_t>, SpoolError> SpoolWriter::rotateIfNeeded(
    std::int64_t adding) const {
    // A length that cannot be told only means that a failed write is not undone.
    struct stat status{};
    if (stat(paths.activeSpoolFile().c_str(), &status) != 0)
        return errno == ENOENT ? std::optional<std::int64_t>{0} : std::nullopt;
    if (status.st_size + adding <= configuration.maxActiveFileBytes) return status.st_size;

    // Named by the time alone, the file would be the first to go after the clock was set back.
    const auto name = SpoolFileName::makeNext(SpoolFileName::Prefix::overflow, currentInstant(),
                                              SpoolFileName::pendingFiles(paths.spoolDirectory()));
    const auto segment = paths.spoolDirectory() / name;
    if (std::rename(paths.activeSpoolFile().c_str(), segment.c_str()) != 0)
        return std::unexpected(SpoolError::io("rotate", errno));
    deleteOldestOverflow(paths.spoolDirectory(), configuration.maxOverflowFiles);
    return 0;
}

std::expected<void, SpoolError> SpoolWriter::appendBytes(std::string_view bytes,
                                                         const std::filesystem::path& file) {
    // Without O_NONBLOCK the opening of a pipe waits for a reader that may never come.
    const FileDescriptor opened{
        open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC, ownerOnly)};
    struct stat status{};
    if (!opened.isOpen() || fstat(opened.number(), &status) != 0)
        return std::unexpected(SpoolError::io("open-spool", errno));
    if (!S_ISREG(status.st_mode)) return std::unexpected(SpoolError::io("open-spool", EINVAL));
    if (lacksOwnersBits(status)) fchmod(opened.number(), ownerOnly);
    if (auto written = FileContents::write(opened.number(), bytes); !written)
        return std::unexpected(SpoolError::io(written.error().step, written.error().errorNumber));
    return {};
}

}  // namespace tallowbrook
