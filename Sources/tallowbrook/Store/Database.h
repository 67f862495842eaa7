// The host's database: one SQLite file in the data home, its tables, and the statements on it.
//
// `SessionStore`, `Outbox` and `Settings` say what lies in it. A value belongs to one thread; any
// number of processes may open the same file. Everything but `open` throws SQLite::Exception when
// the database fails. Transactions belong to the callers of the stores: a statement outside of one
// is a transaction of its own.
#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>

#include <cstdint>
#include <expected>
#include <map>
#include <memory>

#include "Domain/Instant.h"
#include "EventBridge/TallowbrookPaths.h"
#include "Output/Sentence.h"

namespace tallowbrook::host {

class Database {
 public:
    // One of a home at a time in a process: closing a second one would give the locks of the first
    // back (POSIX fcntl(2)). Creates the file, owner-only, and brings it to the current schema. A
    // database of a newer program, or of a version that never was, is refused and left as it is.
    // Waits for other processes that make or change it, 5 s in all. Throws SQLite::Exception as
    // well.
    [[nodiscard]] static std::expected<Database, Sentence> open(const TallowbrookPaths& paths);

    // The same for a home that may not be written: nothing can be stored, and what has to be
    // brought forward to the current schema is refused. Throws SQLite::Exception as well.
    [[nodiscard]] static std::expected<Database, Sentence> openToRead(
        const TallowbrookPaths& paths);

    // Whether this process may make the database, or write to the one that is there, and beside it.
    static bool mayBeWritten(const TallowbrookPaths& paths);

    // Whether it was opened by `openToRead`.
    bool isReadOnly() const;

    // Whether there is a database to open at all, for a caller that only looks.
    static bool exists(const TallowbrookPaths& paths);

    // False once the file was removed, or another one has taken its place: what is committed is
    // then out of reach for other processes, and lost when the value goes. False too where the
    // place cannot be looked at.
    bool isInPlace() const;

    // Throws SQLite::Exception where `isInPlace` is false.
    void requireToBeInPlace() const;

    // Goes on with the file that is in place now, as `open` does. No statement may be in use and no
    // transaction open. Fails as `open` does, and then keeps the file it has.
    [[nodiscard]] std::expected<void, Sentence> reopen(const TallowbrookPaths& paths);

    // A transaction that writes; waits for another process that writes, 5 s at most. Undone unless
    // it is committed.
    SQLite::Transaction beginWriting();

    // Resets a statement at the end of its use. One that is not reset keeps its view of the
    // database, and the write-ahead log could never be cut.
    struct ReleaseStatement {
        void operator()(SQLite::Statement* statement) const;
    };
    using StatementUse = std::unique_ptr<SQLite::Statement, ReleaseStatement>;

    // Compiles a statement once. `sql` lives as long as the value, so it is a literal. Its use
    // waits for locks 5 s at most.
    StatementUse prepared(const char* sql);

    std::int64_t lastInsertedRow() const;

    // Another number after another process has changed the file; reads no table.
    std::int64_t dataVersion();

    // Another value after any process, this one too, has changed the file; reads no table.
    struct Mark {
        std::int64_t byOthers = 0;
        std::int64_t byThisOne = 0;
        bool operator==(const Mark&) const = default;
    };
    Mark mark();

 private:
    explicit Database(std::unique_ptr<SQLite::Database> database);

    std::unique_ptr<SQLite::Database> database_;
    std::map<const char*, SQLite::Statement> statements_;
};

// How instants lie in the tables: microseconds since 1970-01-01 UTC.
std::int64_t storedForm(Instant instant);
Instant instantOf(const SQLite::Column& column);

}  // namespace tallowbrook::host
