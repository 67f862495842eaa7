#include "SessionsCommand.h"

#include <fmt/core.h>

#include <cstdio>

#include "EventBridge/SpoolDrainer.h"
#include "EventStore.h"
#include "HostLock.h"

namespace tallowbrook::host {
namespace {

void hintAtPendingEvents(const TallowbrookPaths& paths) {
    if (HostLock::isHeld(paths) || SpoolDrainer{paths}.pendingSegmentCount() == 0) return;
    fmt::print(stderr,
               "tallowbrook: Events wait in the spool. \"tallowbrook watch\" reads them.\n");
}

}  // namespace

int listSessions(const TallowbrookPaths& paths, ListScope scope, ListFormat format) {
    std::vector<SessionSnapshot> snapshots;
    try {
        if (EventStore::exists(paths)) {
            auto store = EventStore::open(paths);
            if (!store) {
                fmt::print(stderr, "tallowbrook: {}\n", store.error());
                return 1;
            }
            snapshots = store->sessions();
        }
    } catch (const SQLite::Exception& error) {
        fmt::print(stderr, "tallowbrook: The database cannot be read: {}.\n", error.what());
        return 1;
    }
    const Instant now = currentInstant();
    const auto list = SessionList::make(std::move(snapshots), scope, now);
    fmt::print("{}", format == ListFormat::json ? list.json(now) : list.table(now));
    hintAtPendingEvents(paths);
    return 0;
}

}  // namespace tallowbrook::host
