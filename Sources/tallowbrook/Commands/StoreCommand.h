// What the commands on the store have in common: opening it, and saying why it cannot be used.
#pragma once

#include <expected>
#include <functional>
#include <optional>
#include <string>

#include "EventBridge/TallowbrookPaths.h"
#include "Store/EventStore.h"

namespace tallowbrook::host {

// Gives what the action gives, or `failed` with the reason on standard error when the store cannot
// be opened or fails meanwhile.
int withStore(const TallowbrookPaths& paths, const std::function<int(EventStore&)>& action);

// The same for commands that only look, and make no database where nothing was ever stored: they
// have something to show without a store too, and are given none then.
int withStoreIfAny(const TallowbrookPaths& paths, const std::function<int(EventStore*)>& action);

// The same for commands that cannot do without: where nothing was ever stored, says so and fails.
int withExistingStore(const TallowbrookPaths& paths, const std::function<int(EventStore&)>& action);

// The store alone, for a command to which one that cannot be opened is no reason to fail. The error
// is a whole sentence for the user.
[[nodiscard]] std::expected<std::optional<EventStore>, std::string> openIfAny(
    const TallowbrookPaths& paths);

}  // namespace tallowbrook::host
