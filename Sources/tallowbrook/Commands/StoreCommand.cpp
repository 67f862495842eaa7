#include "Commands/StoreCommand.h"

#include <fmt/core.h>

#include "Output/StandardStreams.h"

namespace tallowbrook::host {
namespace {

int actOn(EventStore* store, const std::function<int(EventStore*)>& action) {
    try {
        return action(store);
    } catch (const SQLite::Exception& error) {
        return StandardStreams::fail(fmt::format("The database failed: {}.", error.what()));
    }
}

}  // namespace

std::expected<std::optional<EventStore>, std::string> openIfAny(const TallowbrookPaths& paths) {
    if (!EventStore::exists(paths)) return std::nullopt;
    return EventStore::open(paths);
}

int withStore(const TallowbrookPaths& paths, const std::function<int(EventStore&)>& action) {
    auto store = EventStore::open(paths);
    if (!store) return StandardStreams::fail(store.error());
    return actOn(&*store, [&](EventStore* opened) { return action(*opened); });
}

int withStoreIfAny(const TallowbrookPaths& paths, const std::function<int(EventStore*)>& action) {
    auto store = openIfAny(paths);
    if (!store) return StandardStreams::fail(store.error());
    return actOn(*store ? &**store : nullptr, action);
}

int withExistingStore(const TallowbrookPaths& paths,
                      const std::function<int(EventStore&)>& action) {
    return withStoreIfAny(paths, [&](EventStore* store) {
        if (store != nullptr) return action(*store);
        return StandardStreams::fail(
            "There are no sessions yet. \"tallowbrook setup\" lets the agents report, "
            "\"tallowbrook watch\" reads what they say.");
    });
}

}  // namespace tallowbrook::host
