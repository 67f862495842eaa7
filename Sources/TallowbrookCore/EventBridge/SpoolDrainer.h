// The reading end of the spool: claims what writers have written, segment by segment.
//
// Meant for one process at a time; writers may append meanwhile. Expected use: `claimPendingFiles`,
// then for each file in order `forEachEvent` or `readEvents`, store the events, then `remove`. A
// crash before the removal delivers the segment again, with the same event ids. Keeps no state; any
// thread.
#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <string_view>
#include <vector>

#include "Domain/AgentEvent.h"
#include "EventBridge/SpoolError.h"
#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook {

struct SpoolReadResult {
    std::vector<AgentEvent> events;  // in file order
    std::int64_t invalidLineCount = 0;
    bool operator==(const SpoolReadResult&) const = default;
};

struct SpoolDrainer {
    TallowbrookPaths paths;
    Seconds lockTimeout{0.5};  // how long `claimPendingFiles` may block

    // Renames the active file, where it holds anything, to an ingest segment, and gives all
    // segments in processing order. Creates the spool directory if need be. After an error no event
    // is lost and writers go on as before; what was renamed by then is given the next time.
    [[nodiscard]] std::expected<std::vector<std::filesystem::path>, SpoolAccessError>
    claimPendingFiles() const;

    // Decodes a whole segment; lines that are no events are counted and passed over. Fails with the
    // step "open" or "read" when the file cannot be read, is no regular one, or is too large.
    [[nodiscard]] static std::expected<SpoolReadResult, FileError> readEvents(
        const std::filesystem::path& file);

    // Hands over one event after the other, with the line it was read from, which has no line feed
    // and is gone after the call. Gives the number of lines that are no events; calls nothing
    // before an error. What `take` throws passes through, and the segment stays.
    using EventSink = std::function<void(AgentEvent&& event, std::string_view line)>;
    [[nodiscard]] static std::expected<std::int64_t, FileError> forEachEvent(
        const std::filesystem::path& file, const EventSink& take);

    // Deletes a segment whose events are stored; a failure is ignored.
    static void remove(const std::filesystem::path& file);

    // Segments plus the active file where that holds anything; takes no lock.
    std::int64_t pendingSegmentCount() const;
};

}  // namespace tallowbrook
