#include "Store/DatabaseFailure.h"

#include <fmt/core.h>
#include <sqlite3.h>

namespace tallowbrook::host {

namespace {

int primaryCode(const SQLite::Exception& error) {
    constexpr int primaryPart = 0xFF;
    return error.getErrorCode() & primaryPart;
}

// Whether what lies in the file is no sound database, so that no later try will fare better.
bool isDamage(const SQLite::Exception& error) {
    return primaryCode(error) == SQLITE_CORRUPT || primaryCode(error) == SQLITE_NOTADB;
}

std::string reasonOf(const SQLite::Exception& error) {
    // SQLite's own words for the second one say nothing to a user.
    const bool isLocked =
        primaryCode(error) == SQLITE_BUSY || primaryCode(error) == SQLITE_PROTOCOL;
    if (!isLocked) return error.what();
    return "it is locked by another process, or its file system refuses locks";
}

}  // namespace

Sentence damagedDatabase(const std::filesystem::path& file, std::string_view what) {
    return Sentence{
        fmt::format("The database {0} is damaged: {1}. Move it away (mv {0} "
                    "{0}.damaged) and start again; what the agents report from then "
                    "on is kept.",
                    file.string(), what)};
}

Sentence databaseFailure(const std::filesystem::path& file, const SQLite::Exception& error) {
    if (isDamage(error)) return damagedDatabase(file, error.what());
    return Sentence{fmt::format("The database failed: {}", reasonOf(error))};
}

Sentence openingFailure(const std::filesystem::path& file, const SQLite::Exception& error) {
    // While the schema is brought forward this means that the tables are not those of the version
    // that the file names. Later it may mean that a newer program has changed them.
    if (isDamage(error) || primaryCode(error) == SQLITE_ERROR)
        return damagedDatabase(file, error.what());
    return Sentence{
        fmt::format("The database {} cannot be opened: {}", file.string(), reasonOf(error))};
}

}  // namespace tallowbrook::host
