// The cheapest way to the rows behind a list of sessions: one query, stepped through, nothing kept.
//   bare-query DATABASE
#include <sqlite3.h>

int main(int argc, char** argv) {
    sqlite3* database;
    sqlite3_stmt* query;
    long long bytes = 0;
    if (argc != 2 || sqlite3_open_v2(argv[1], &database, SQLITE_OPEN_READWRITE, 0) != SQLITE_OK)
        return 1;
    if (sqlite3_prepare_v2(database, "SELECT snapshot FROM sessions ORDER BY number", -1, &query,
                           0) != SQLITE_OK)
        return 1;
    while (sqlite3_step(query) == SQLITE_ROW) {
        sqlite3_column_text(query, 0);
        bytes += sqlite3_column_bytes(query, 0);
    }
    sqlite3_finalize(query);
    sqlite3_close(database);
    return bytes > 0 ? 0 : 1;
}
