#include "Commands/SessionsCommand.h"

#include "Commands/DatabaseDoor.h"
#include "Commands/SessionChoice.h"
#include "EventBridge/SpoolDrainer.h"
#include "Output/StandardStreams.h"
#include "Watch/HostLock.h"

namespace tallowbrook::host {
namespace {

void hintAtPendingEvents(const TallowbrookPaths& paths) {
    if (HostLock::isHeld(paths) || SpoolDrainer{paths}.pendingSegmentCount() == 0) return;
    StandardStreams::complain("Events wait in the spool. \"tallowbrook watch\" reads them.");
}

}  // namespace

int listSessions(const TallowbrookPaths& paths, ListScope scope, ListFormat format) {
    return withDatabaseIfAny(paths, [&](Database* database) {
        const Instant now = currentInstant();
        const auto list =
            database != nullptr ? listedSessions(*database, scope, now) : SessionList{};
        const int status = StandardStreams::showAsResult(
            format == ListFormat::json ? list.json(now) : list.table(now));
        hintAtPendingEvents(paths);
        return status;
    });
}

}  // namespace tallowbrook::host
