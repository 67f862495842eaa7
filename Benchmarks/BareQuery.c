// The cheapest way to what a list of sessions shows: the sessions of the last day and the number of
// older ones, stepped through, nothing kept.
//   bare-query DATABASE
#include <sqlite3.h>

static const char* const questions[] = {
    "SELECT snapshot FROM sessions WHERE last_seen_at >= (unixepoch() - 86400) * 1000000"
    " ORDER BY +number",
    "SELECT count(*) FROM sessions WHERE last_seen_at < (unixepoch() - 86400) * 1000000",
};

int main(int argc, char** argv) {
    sqlite3* database;
    long long bytes = 0;
    if (argc != 2 || sqlite3_open_v2(argv[1], &database, SQLITE_OPEN_READWRITE, 0) != SQLITE_OK)
        return 1;
    for (int i = 0; i < 2; ++i) {
        sqlite3_stmt* query;
        if (sqlite3_prepare_v2(database, questions[i], -1, &query, 0) != SQLITE_OK) return 1;
        while (sqlite3_step(query) == SQLITE_ROW) {
            sqlite3_column_text(query, 0);
            bytes += sqlite3_column_bytes(query, 0);
        }
        sqlite3_finalize(query);
    }
    sqlite3_close(database);
    return bytes > 0 ? 0 : 1;
}
