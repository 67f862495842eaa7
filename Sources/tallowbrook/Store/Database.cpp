#include "Store/Database.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

#include "Store/DatabaseFailure.h"
#include "Store/LockPatience.h"
#include "Store/StoreSchema.h"
#include "System/FileDescriptor.h"
#include "System/ReplacementFile.h"

namespace tallowbrook::host {
namespace {

// SQLite gives its companion files the mode of the database, so that one must be right first.
std::expected<void, FileError> makeOwnerOnlyFile(const std::filesystem::path& path) {
    const FileDescriptor file{::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)};
    if (!file.isOpen()) return std::unexpected(FileError{"open", errno});
    if (fchmod(file.number(), 0600) != 0) return std::unexpected(FileError{"chmod", errno});
    return {};
}

// The step into this mode does not wait for other processes as all else does, so it is tried again.
void enterWALMode(SQLite::Database& database) {
    while (database.tryExec("PRAGMA journal_mode = WAL") == SQLITE_BUSY)
        if (!LockPatience::sleep(std::chrono::milliseconds{5}))
            throw SQLite::Exception(database.getHandle());
}

// The last connection that closes writes the log into the file, unless it is told not to.
void writeLogBackAtClose(SQLite::Database& database, bool wanted) {
    sqlite3_db_config(database.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, wanted ? 0 : 1,
                      nullptr);
}

// The file as SQLite takes one that nobody writes, see its "URI filenames".
std::string immutable(const std::filesystem::path& file) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string uri = "file:";
    for (const char c : file.string()) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '%' || c == '?' || c == '#')
            uri.append({'%', digits[byte >> 4U], digits[byte & 0xFU]});
        else
            uri += c;
    }
    return uri + "?immutable=1";
}

}  // namespace

Database::Database(std::unique_ptr<SQLite::Database> database) : database_{std::move(database)} {}

std::expected<Database, Sentence> Database::open(const TallowbrookPaths& paths) {
    const auto refuse = [&](const std::string& reason) {
        return std::unexpected(Sentence{"The database " + paths.databaseFile().string() +
                                        " cannot be opened: " + reason});
    };
    if (auto made = TallowbrookPaths::ensureDirectory(paths.home); !made)
        return refuse(made.error().description());
    const bool isNew = !exists(paths);
    if (auto made = makeOwnerOnlyFile(paths.databaseFile()); !made)
        return refuse(made.error().description());
    // What is committed must be found again after a power cut. A helper that made the home has not
    // waited for the disk.
    if (isNew) syncNamesUpTo(paths.databaseFile());
    LockPatience::renew();
    auto database = std::make_unique<SQLite::Database>(
        paths.databaseFile().string(), SQLite::OPEN_READWRITE,
        static_cast<int>(LockPatience::whole.count()), LockPatience::vfsName());
    // A file that is refused is left as it is.
    writeLogBackAtClose(*database, false);
    const int version = StoreSchema::version(*database);
    if (version > StoreSchema::currentVersion())
        return refuse("it was written by a newer version of tallowbrook");
    if (version < 0)
        return std::unexpected(
            damagedDatabase(paths.databaseFile(), "its version is " + std::to_string(version)));
    enterWALMode(*database);
    // A segment is deleted once its events are committed, so a commit must survive a power cut.
    database->exec("PRAGMA synchronous = FULL");
    database->exec("PRAGMA foreign_keys = ON");
    StoreSchema::migrate(*database);
    writeLogBackAtClose(*database, true);
    return Database{std::move(database)};
}

std::expected<Database, Sentence> Database::openToRead(const TallowbrookPaths& paths) {
    const auto& file = paths.databaseFile();
    std::error_code error;
    const auto logBytes = std::filesystem::file_size(file.string() + "-wal", error);
    // Without a log all is in the file itself. SQLite would want to make a log, unless it is told
    // that nobody writes.
    const bool hasLog = !error && logBytes > 0;
    LockPatience::renew();
    auto database = std::make_unique<SQLite::Database>(
        hasLog ? file.string() : immutable(file), SQLite::OPEN_READONLY | SQLite::OPEN_URI,
        static_cast<int>(LockPatience::whole.count()), LockPatience::vfsName());
    if (StoreSchema::version(*database) == StoreSchema::currentVersion())
        return Database{std::move(database)};
    return std::unexpected(
        Sentence{"The database " + file.string() +
                 " cannot be read: it was written by another version of tallowbrook, and its "
                 "home cannot be written"});
}

bool Database::mayBeWritten(const TallowbrookPaths& paths) {
    const auto isWritable = [](const std::filesystem::path& path, int mode) {
        return access(path.c_str(), mode) == 0 || errno == ENOENT;
    };
    return isWritable(paths.home, W_OK | X_OK) && isWritable(paths.databaseFile(), R_OK | W_OK);
}

bool Database::isReadOnly() const {
    return sqlite3_db_readonly(database_->getHandle(), "main") == 1;
}

bool Database::exists(const TallowbrookPaths& paths) {
    struct stat status{};
    // What cannot be looked at may well be there: opening it will tell the reason.
    if (stat(paths.databaseFile().c_str(), &status) != 0) return errno != ENOENT;
    // A program that is about to make the database has made an empty file first.
    return status.st_size > 0;
}

bool Database::isInPlace() const {
    int hasMoved = 0;
    const int asked =
        sqlite3_file_control(database_->getHandle(), nullptr, SQLITE_FCNTL_HAS_MOVED, &hasMoved);
    return asked == SQLITE_OK && hasMoved == 0;
}

void Database::requireToBeInPlace() const {
    if (!isInPlace()) throw SQLite::Exception{"its file was removed or replaced"};
}

std::expected<void, Sentence> Database::reopen(const TallowbrookPaths& paths) {
    auto fresh = open(paths);
    if (!fresh) return std::unexpected(fresh.error());
    // Before the connection that they belong to.
    statements_.clear();
    database_ = std::move(fresh->database_);
    return {};
}

SQLite::Transaction Database::beginWriting() {
    LockPatience::renew();
    // Not deferred: a transaction that began by reading cannot wait for another writer any more.
    return SQLite::Transaction{*database_, SQLite::TransactionBehavior::IMMEDIATE};
}

void Database::ReleaseStatement::operator()(SQLite::Statement* statement) const {
    // A failure was thrown by the step that met it, so what the reset says is old news.
    statement->tryReset();
    statement->clearBindings();
}

Database::StatementUse Database::prepared(const char* sql) {
    LockPatience::renew();
    auto found = statements_.find(sql);
    if (found == statements_.end())
        found = statements_.emplace(sql, SQLite::Statement{*database_, sql}).first;
    return StatementUse{&found->second};
}

std::int64_t Database::lastInsertedRow() const { return database_->getLastInsertRowid(); }

std::int64_t Database::dataVersion() {
    const auto query = prepared("PRAGMA data_version");
    return query->executeStep() ? query->getColumn(0).getInt64() : 0;
}

Database::Mark Database::mark() { return {dataVersion(), database_->getTotalChanges()}; }

std::int64_t storedForm(Instant instant) { return instant.time_since_epoch().count(); }

Instant instantOf(const SQLite::Column& column) {
    return Instant{std::chrono::microseconds{column.getInt64()}};
}

}  // namespace tallowbrook::host
