#include "Watch/SpoolIntake.h"

#include "Channels/LinesChannel.h"
#include "Store/Settings.h"
#include "Watch/HostLock.h"
#include "Watch/Ingest.h"

namespace tallowbrook::host {

void takeInUnlessWatched(const TallowbrookPaths& paths, Database& database) {
    // Two hosts that drain at once would both count the sessions on from the same state.
    const auto lock = HostLock::tryAcquire(paths);
    if (!lock || !*lock) return;
    const Ingest ingest{Settings{database}.preferences().notifications,
                        Calendar::current(),
                        {std::string{linesChannelName}}};
    ingest.run(EventSource::spool({paths}), database, currentInstant());
}

}  // namespace tallowbrook::host
