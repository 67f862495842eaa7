#include "EventBridge/SpoolDrainer.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "Domain/EventCoding.h"
#include "EventBridge/SpoolFileName.h"
#include "EventBridge/SpoolLock.h"
#include "System/FileContents.h"
#include "Text/TakeUntil.h"

namespace tallowbrook {
namespace {

bool holdsAnything(const std::filesystem::path& file) {
    struct stat status{};
    return stat(file.c_str(), &status) == 0 && status.st_size > 0;
}

std::expected<void, SpoolError> claimActiveFile(const TallowbrookPaths& paths) {
    struct stat status{};
    // No file at all has the size 0.
    if (stat(paths.activeSpoolFile().c_str(), &status) != 0 && errno != ENOENT)
        return std::unexpected(SpoolError::io("claim", errno));
    if (status.st_size == 0) return {};
    // A writer appends only under the lock that is held here, so no line is cut by the renaming.
    const auto segment = paths.spoolDirectory() /
                         SpoolFileName::make(SpoolFileName::Prefix::ingest, currentInstant());
    if (std::rename(paths.activeSpoolFile().c_str(), segment.c_str()) == 0) return {};
    return std::unexpected(SpoolError::io("claim", errno));
}

}  // namespace

std::expected<std::vector<std::filesystem::path>, SpoolAccessError>
SpoolDrainer::claimPendingFiles() const {
    if (auto made = TallowbrookPaths::ensureDirectory(paths.spoolDirectory()); !made)
        return std::unexpected(made.error());
    {
        const auto lock = SpoolLock::acquire(paths, lockTimeout);
        if (!lock) return std::unexpected(lock.error());
        if (auto claimed = claimActiveFile(paths); !claimed)
            return std::unexpected(claimed.error());
    }
    // A segment never changes once it has its name, so the listing needs no lock.
    auto entries = SpoolFileName::listPendingFiles(paths.spoolDirectory());
    if (!entries) return std::unexpected(entries.error());
    std::vector<std::filesystem::path> files;
    for (auto& entry : *entries) files.push_back(std::move(entry.url));
    return files;
}

std::expected<std::int64_t, FileError> SpoolDrainer::forEachEvent(const std::filesystem::path& file,
                                                                  const EventSink& take) {
    const auto bytes = FileContents::read(file);
    if (!bytes) return std::unexpected(bytes.error());

    std::int64_t invalidLineCount = 0;
    std::string_view rest = *bytes;
    while (!rest.empty()) {
        const std::string_view line = takeUntil(rest, '\n');
        if (line.empty()) continue;
        if (auto event = EventCoding::decodeLine(line))
            take(std::move(*event), line);
        else
            ++invalidLineCount;
    }
    return invalidLineCount;
}

std::expected<SpoolReadResult, FileError> SpoolDrainer::readEvents(
    const std::filesystem::path& file) {
    SpoolReadResult result;
    const auto invalidLineCount =
        forEachEvent(file, [&](AgentEvent&& event, std::string_view /*line*/) {
            result.events.push_back(std::move(event));
        });
    if (!invalidLineCount) return std::unexpected(invalidLineCount.error());
    result.invalidLineCount = *invalidLineCount;
    return result;
}

// A segment that stays is delivered again, and its events are known by their ids.
void SpoolDrainer::remove(const std::filesystem::path& file) { unlink(file.c_str()); }

std::int64_t SpoolDrainer::pendingSegmentCount() const {
    const auto segments = SpoolFileName::pendingFiles(paths.spoolDirectory()).size();
    return static_cast<std::int64_t>(segments) + (holdsAnything(paths.activeSpoolFile()) ? 1 : 0);
}

}  // namespace tallowbrook
