// What the commands on the store have in common: opening it, and saying why it cannot be used.
#pragma once

#include <functional>

#include "EventBridge/TallowbrookPaths.h"
#include "EventStore.h"

namespace tallowbrook::host {

// Gives what the action gives, or `failed` with the reason on standard error when the store cannot
// be opened or fails meanwhile.
int withStore(const TallowbrookPaths& paths, const std::function<int(EventStore&)>& action);

// The same for commands that only look: where nothing was ever stored, says so, and makes no
// database.
int withExistingStore(const TallowbrookPaths& paths, const std::function<int(EventStore&)>& action);

}  // namespace tallowbrook::host
