// The proof that an agent's hook reaches the store: the installed helper is run as the agent runs
// it, with a test event, and that event must come back through the spool.
#pragma once

#include <expected>
#include <string>

#include "Domain/AgentEvent.h"
#include "EventBridge/TallowbrookPaths.h"
#include "Output/Sentence.h"
#include "Store/Database.h"

namespace tallowbrook::host {

// Runs the helper and, where no other host drains this home, drains its event. Waits at most 5 s
// for the helper and 5 s for the event, and removes the test session again. Throws
// SQLite::Exception when the store fails.
[[nodiscard]] std::expected<void, Sentence> tryHelper(const TallowbrookPaths& paths,
                                                      Provider provider, Database& database);

}  // namespace tallowbrook::host
