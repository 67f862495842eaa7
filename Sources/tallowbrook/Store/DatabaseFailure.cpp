#include "Store/DatabaseFailure.h"

#include <fmt/core.h>
#include <sqlite3.h>

namespace tallowbrook::host {

bool isDamage(const SQLite::Exception& error) {
    constexpr int primaryCode = 0xFF;
    const int code = error.getErrorCode() & primaryCode;
    return code == SQLITE_CORRUPT || code == SQLITE_NOTADB;
}

Sentence damagedDatabase(const std::filesystem::path& file, std::string_view what) {
    return Sentence{
        fmt::format("The database {0} is damaged: {1}. Move it away (mv {0} "
                    "{0}.damaged) and start again; what the agents report from then "
                    "on is kept.",
                    file.string(), what)};
}

Sentence databaseFailure(const std::filesystem::path& file, const SQLite::Exception& error) {
    if (isDamage(error)) return damagedDatabase(file, error.what());
    return Sentence{fmt::format("The database failed: {}", error.what())};
}

}  // namespace tallowbrook::host
