#include "StoreCommand.h"

#include <fmt/core.h>

#include "ExitStatus.h"
#include "TerminalOutput.h"

namespace tallowbrook::host {

int withStore(const TallowbrookPaths& paths, const std::function<int(EventStore&)>& action) {
    auto store = EventStore::open(paths);
    if (!store) {
        TerminalOutput::complain(store.error());
        return ExitStatus::failed;
    }
    try {
        return action(*store);
    } catch (const SQLite::Exception& error) {
        TerminalOutput::complain(fmt::format("The database failed: {}.", error.what()));
        return ExitStatus::failed;
    }
}

int withExistingStore(const TallowbrookPaths& paths,
                      const std::function<int(EventStore&)>& action) {
    if (EventStore::exists(paths)) return withStore(paths, action);
    TerminalOutput::complain(
        "There are no sessions yet. \"tallowbrook setup\" lets the agents report, \"tallowbrook "
        "watch\" reads what they say.");
    return ExitStatus::failed;
}

}  // namespace tallowbrook::host
