#include "SpoolContents.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <system_error>

#include "Domain/EventCoding.h"
#include "EventBridge/SpoolFileName.h"
#include "EventBridge/SpoolLock.h"
#include "Support/FileModeMask.h"

namespace tallowbrook {
namespace {

// In one piece, since a full spool is read many times.
std::string bytesOf(const std::filesystem::path& file) {
    std::error_code isMissing;
    const auto size = file_size(file, isMissing);
    std::string bytes(isMissing ? 0 : size, '\0');
    std::ifstream{file, std::ios::binary}.read(bytes.data(),
                                               static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

void addFile(SpoolContents& contents, const std::filesystem::path& file) {
    const std::string bytes = bytesOf(file);
    std::string_view rest = bytes;
    for (std::size_t end = 0; (end = rest.find('\n')) != rest.npos; rest.remove_prefix(end + 1)) {
        const std::string_view line = rest.substr(0, end);
        if (auto event = EventCoding::decodeLine(line))
            contents.events.push_back(std::move(*event));
        else
            contents.invalidLines.emplace_back(line);
    }
    if (!rest.empty()) contents.tornEnds.emplace_back(rest);
}

}  // namespace

SpoolContents SpoolContents::of(const TallowbrookPaths& paths) {
    SpoolContents contents;
    for (const auto& entry : SpoolFileName::pendingFiles(paths.spoolDirectory()))
        addFile(contents, entry.url);
    addFile(contents, paths.activeSpoolFile());
    return contents;
}

std::multiset<std::string> SpoolContents::sessions() const {
    std::multiset<std::string> ids;
    for (const auto& event : events) ids.insert(event.sessionID.value_or("none"));
    return ids;
}

bool isSpoolFree(const TallowbrookPaths& paths) {
    if (!exists(paths.spoolDirectory())) return true;
    return SpoolLock::acquire(paths, Seconds{0}).has_value();
}

void expectOwnerOnlyModes(const TallowbrookPaths& paths) {
    if (!exists(paths.home)) return;
    EXPECT_EQ(modeOf(paths.home.c_str()), 0700U) << paths.home;
    for (const auto& entry : std::filesystem::recursive_directory_iterator{paths.home})
        EXPECT_EQ(modeOf(entry.path().c_str()), entry.is_directory() ? 0700U : 0600U)
            << entry.path();
}

}  // namespace tallowbrook
