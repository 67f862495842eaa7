// Appends events to the spool, the hand-off between many short-lived helpers and one reader.
//
// Any number of processes may append at once; each holds the lock file while it writes. A writer
// keeps nothing between calls, so one value may be used from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <string_view>

#include "Domain/AgentEvent.h"
#include "EventBridge/SpoolError.h"
#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook {

struct SpoolConfiguration {
    std::int64_t maxActiveFileBytes = 2'097'152;  // a larger file is moved aside
    int maxOverflowFiles = 8;                     // older segments are deleted
    Seconds lockTimeout{0.5};
    std::size_t maxLineBytes = 16'384;  // counts the line feed
    bool operator==(const SpoolConfiguration&) const = default;
};

struct SpoolWriter {
    TallowbrookPaths paths;
    SpoolConfiguration configuration;

    // Writes `event` as one line, creating the spool directory if need be. Blocks for at most
    // `lockTimeout`. After `lineTooLarge` or `lockTimeout` nothing was written; after
    // `io("write", …)` the file is as long as before, where the system still allows that.
    [[nodiscard]] std::expected<void, SpoolAccessError> append(const AgentEvent& event) const;

    // Moves the active file aside when `adding` bytes would take it past its cap, and deletes the
    // oldest overflow segments beyond their cap. Called with the lock held. Gives the length in
    // bytes of the active file that is there now, 0 for none, absent when it cannot be told.
    [[nodiscard]] std::expected<std::optional<std::int64_t>, SpoolError> rotateIfNeeded(
        std::int64_t adding) const;

    // Appends to `file`, creating it with mode 0600 whatever the umask; takes no lock and never
    // waits. Refuses what is no regular file with `io("open-spool", …)`: a pipe with ENXIO or
    // EINVAL, a directory with EISDIR. A failed write may leave a part of `bytes` behind.
    [[nodiscard]] static std::expected<void, SpoolError> appendBytes(
        std::string_view bytes, const std::filesystem::path& file);
};

}  // namespace tallowbrook
