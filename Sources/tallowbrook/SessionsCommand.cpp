#include "SessionsCommand.h"

#include <fmt/core.h>

#include "EventBridge/SpoolDrainer.h"
#include "EventStore.h"
#include "HostLock.h"
#include "TerminalOutput.h"

namespace tallowbrook::host {
namespace {

void hintAtPendingEvents(const TallowbrookPaths& paths) {
    if (HostLock::isHeld(paths) || SpoolDrainer{paths}.pendingSegmentCount() == 0) return;
    TerminalOutput::complain("Events wait in the spool. \"tallowbrook watch\" reads them.");
}

// The sentence of the failure is for the user.
std::expected<std::vector<SessionSnapshot>, std::string> readSessions(
    const TallowbrookPaths& paths) {
    if (!EventStore::exists(paths)) return {};
    auto store = EventStore::open(paths);
    if (!store) return std::unexpected(store.error());
    try {
        return store->sessions();
    } catch (const SQLite::Exception& error) {
        return std::unexpected(fmt::format("The database cannot be read: {}.", error.what()));
    }
}

}  // namespace

int listSessions(const TallowbrookPaths& paths, ListScope scope, ListFormat format) {
    auto snapshots = readSessions(paths);
    if (!snapshots) {
        TerminalOutput::complain(snapshots.error());
        return 1;
    }
    const Instant now = currentInstant();
    const auto list = SessionList::make(std::move(*snapshots), scope, now);
    const int status =
        TerminalOutput::showAsResult(format == ListFormat::json ? list.json(now) : list.table(now));
    hintAtPendingEvents(paths);
    return status;
}

}  // namespace tallowbrook::host
