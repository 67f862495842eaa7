// Reads the SQLite database of another program without leaving a trace: no file is made, changed or
// removed, and the other program never waits.
#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include <filesystem>
#include <functional>

namespace tallowbrook::host::ForeignDatabase {

// Runs `look` on the database, for as short as it can be. False, and nothing said, where there is
// none, it cannot be read now, or `look` throws SQLite::Exception.
bool read(const std::filesystem::path& file, const std::function<void(SQLite::Database&)>& look);

}  // namespace tallowbrook::host::ForeignDatabase
