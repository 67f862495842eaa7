// The tables of the host's database, and the way from every older form of them to the newest.
#pragma once

#include <SQLiteCpp/Database.h>

#include <string>

namespace tallowbrook::host::StoreSchema {

// The version that this program writes; the database keeps its own in `PRAGMA user_version`.
int currentVersion();

// Whatever number stands there: it may be newer than the current one, and in a damaged file
// negative.
int version(SQLite::Database& database);

// Brings the tables to the current version, each step in a transaction of its own; several
// processes may try at once. Throws SQLite::Exception; the database then has the version of the
// last step that was done. A version that this program does not know is left alone.
void migrate(SQLite::Database& database);

}  // namespace tallowbrook::host::StoreSchema
