// The session that the user means by a word of the command line.
#pragma once

#include <expected>
#include <string>
#include <string_view>

#include "Lists/SessionList.h"
#include "Store/EventStore.h"

namespace tallowbrook::host {

// A number of the list that `tallowbrook sessions` shows, or the beginning of an id, of older
// sessions too. Throws SQLite::Exception when the store fails.
[[nodiscard]] std::expected<ListedSession, Sentence> chooseSession(EventStore& store,
                                                                   std::string_view word,
                                                                   Instant now);

}  // namespace tallowbrook::host
