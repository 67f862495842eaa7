// The sessions of the database as commands choose from them. The agents of those that work or wait
// are looked at anew, whether a host watches or not.
#pragma once

#include <expected>
#include <string>
#include <string_view>

#include "Commands/CommandLine.h"
#include "Lists/SessionList.h"
#include "Store/Database.h"

namespace tallowbrook::host {

// A number of the list that `tallowbrook sessions` shows, or the beginning of an id, of older
// sessions too. Throws SQLite::Exception when the database
// fails.
[[nodiscard]] std::expected<ListedSession, Sentence> chooseSession(Database& database,
                                                                   std::string_view word,
                                                                   Instant now);

// The sessions that a list shows by default, and how many it leaves out. Throws SQLite::Exception
// when the database fails.
SessionList recentSessions(Database& database, Instant now);

// `recentSessions`, or all.
SessionList listedSessions(Database& database, ListScope scope, Instant now);

// The operand by which a command is told the session.
void addSessionOperand(CommandWords& words, std::string& session);

}  // namespace tallowbrook::host
