#include "Commands/SessionsCommand.h"

#include <memory>

#include "Commands/CommandLine.h"
#include "Commands/SessionChoice.h"
#include "Commands/UpToDateDatabase.h"
#include "Output/StandardStreams.h"

namespace tallowbrook::host {

int listSessions(const TallowbrookPaths& paths, ListScope scope, ListFormat format) {
    return withUpToDateDatabase(paths, [&](Database* database) {
        const Instant now = currentInstant();
        const auto list =
            database != nullptr ? listedSessions(*database, scope, now) : SessionList{};
        return StandardStreams::showAsResult(format == ListFormat::json ? list.json(now)
                                                                        : list.table(now));
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
