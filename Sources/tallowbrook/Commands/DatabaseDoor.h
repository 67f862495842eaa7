// The door between the commands and the database: it opens the database, and turns its exceptions
// into sentences. No command lets one pass.
#pragma once

#include <expected>
#include <functional>
#include <optional>
#include <type_traits>

#include "EventBridge/TallowbrookPaths.h"
#include "Output/Sentence.h"
#include "Store/Database.h"

namespace tallowbrook::host {

// Gives what the action gives, or `failed` with the reason on standard error when the database
// cannot be opened or fails meanwhile.
int withDatabase(const TallowbrookPaths& paths, const std::function<int(Database&)>& action);

// For a command that only looks, and makes no database where nothing was ever stored: it has
// something to show without one too, and is given none then. Where the home may not be written the
// database is read-only. Otherwise as `withDatabase`.
int withDatabaseIfAny(const TallowbrookPaths& paths, const std::function<int(Database*)>& action);

// For a command that cannot do without: where nothing was ever stored, says so and fails. Otherwise
// as `withDatabase`.
int withExistingDatabase(const TallowbrookPaths& paths,
                         const std::function<int(Database&)>& action);

// The action, or that failure where it is given no database.
std::function<int(Database*)> orNoSessions(const std::function<int(Database&)>& action);

// For a command to which a database that fails is no reason to fail: runs the action, with the
// database, or with one where there is one, or gives the reason why it could not.
[[nodiscard]] std::expected<void, Sentence> tryDatabase(
    const TallowbrookPaths& paths, const std::function<void(Database&)>& action);
[[nodiscard]] std::expected<void, Sentence> tryDatabaseIfAny(
    const TallowbrookPaths& paths, const std::function<void(Database*)>& action);

}  // namespace tallowbrook::host
