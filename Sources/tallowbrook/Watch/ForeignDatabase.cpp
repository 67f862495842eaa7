#include "Watch/ForeignDatabase.h"

#include <SQLiteCpp/Exception.h>
#include <sqlite3.h>

#include <optional>
#include <string>
#include <string_view>

namespace tallowbrook::host {
namespace {

bool exists(const std::string& file) {
    std::error_code error;
    return std::filesystem::is_regular_file(file, error);
}

std::string asURI(const std::string& file, std::string_view options) {
    std::string text = "file:";
    for (const char c : file)
        if (c == '%')
            text += "%25";
        else if (c == '?')
            text += "%3f";
        else if (c == '#')
            text += "%23";
        else
            text += c;
    return text.append(options);
}

// A database with a write-ahead log is read through the log's shared memory, which even a
// connection that only reads would create. So the two files must be there, which they are while the
// other program has the database open. Without a log the database is closed, and lies there whole:
// it is read as if it never changed, without any lock.
std::optional<std::string> waysToOpen(const std::string& file) {
    if (!exists(file)) return std::nullopt;
    const bool hasLog = exists(file + "-wal");
    const bool hasMemory = exists(file + "-shm");
    if (hasLog && hasMemory) return asURI(file, "?mode=ro");
    // A rollback journal would have to be played back first.
    if (hasLog || exists(file + "-journal")) return std::nullopt;
    return asURI(file, "?mode=ro&immutable=1");
}

}  // namespace

bool ForeignDatabase::read(const std::filesystem::path& file,
                           const std::function<void(SQLite::Database&)>& look) {
    const auto way = waysToOpen(file.string());
    if (!way) return false;
    try {
        SQLite::Database database{*way, SQLite::OPEN_READONLY | SQLite::OPEN_URI};
        // The last one that closes a database removes its log, but that is for its owner to do.
        sqlite3_db_config(database.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        look(database);
        return true;
    } catch (const SQLite::Exception&) {
        return false;
    }
}

}  // namespace tallowbrook::host
