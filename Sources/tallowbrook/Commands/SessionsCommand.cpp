#include "Commands/SessionsCommand.h"

#include <memory>

#include "Commands/CommandLine.h"
#include "Commands/DatabaseDoor.h"
#include "Commands/SessionChoice.h"
#include "EventBridge/SpoolDrainer.h"
#include "Output/StandardStreams.h"
#include "Watch/HostLock.h"

namespace tallowbrook::host {
namespace {

// On standard error, so that the JSON of a pipe stays whole. A host that watches is about to store
// what waits: then there is nothing to hint at.
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

void addSessionsCommand(CommandLine& line) {
    struct Words {
        bool json = false;
        bool all = false;
    };
    const auto given = std::make_shared<Words>();
    auto words = line.add("sessions", "List the sessions", [given](const TallowbrookPaths& paths) {
        return listSessions(paths, given->all ? ListScope::all : ListScope::recent,
                            given->json ? ListFormat::json : ListFormat::table);
    });
    words.addFlag("--json", given->json, "As a JSON array, for programs");
    words.addFlag("--all", given->all, "Also those not heard of for more than a day");
}

}  // namespace tallowbrook::host
