#include "Watch/SpoolIntake.h"

#include <chrono>

#include "Channels/DesktopChannel.h"
#include "Channels/LinesChannel.h"
#include "Store/Settings.h"
#include "Watch/HostLock.h"
#include "Watch/Ingest.h"

namespace tallowbrook::host {

SpoolIntake takeInUnlessWatched(const TallowbrookPaths& paths, Database& database) {
    // Two hosts that drain at once would both count the sessions on from the same state.
    const auto lock = HostLock::tryAcquire(paths);
    if (!lock)
        return {.isWatched = false,
                .troubles = {Sentence{"The lock of this home cannot be taken: " +
                                      lock.error().description()}}};
    if (!*lock) return {.isWatched = true, .troubles = {}};
    const Instant now = currentInstant();
    auto [preferences, host] = Settings{database}.preferences().asOf(now);
    // What is too old to be told is for the next host to judge, which tells in one line what it
    // missed.
    preferences.maxEventAge = std::chrono::years{1};
    const Ingest ingest{preferences,
                        Calendar::current(),
                        {std::string{linesChannelName}, std::string{desktopChannelName}},
                        host.completionAfter};
    const auto report = ingest.run(EventSource::spool({paths}), database, now);
    SpoolIntake intake;
    for (const auto& trouble : report.troubles) intake.troubles.emplace_back(trouble);
    if (const auto skipped = report.skippedLines()) intake.troubles.push_back(*skipped);
    return intake;
}

}  // namespace tallowbrook::host
