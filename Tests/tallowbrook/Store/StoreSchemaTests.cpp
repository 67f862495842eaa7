#include "Store/StoreSchema.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace tallowbrook::host {
namespace {

SQLite::Database inMemory() {
    return SQLite::Database{":memory:", SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE};
}

std::set<std::string> tables(SQLite::Database& database) {
    std::set<std::string> names;
    SQLite::Statement query{database, "SELECT name FROM sqlite_schema WHERE type = 'table'"};
    while (query.executeStep()) names.insert(query.getColumn(0).getString());
    return names;
}

// The tables of the first version, with what its hosts wrote.
constexpr const char* firstVersion = R"sql(
    CREATE TABLE sessions (
        number INTEGER PRIMARY KEY, storage_id TEXT NOT NULL UNIQUE, snapshot TEXT NOT NULL);
    CREATE TABLE events (
        number INTEGER PRIMARY KEY, id BLOB NOT NULL UNIQUE,
        session INTEGER REFERENCES sessions (number), observed_at INTEGER NOT NULL,
        effect TEXT NOT NULL, record TEXT NOT NULL);
    CREATE INDEX events_by_session ON events (session) WHERE session IS NOT NULL;
    CREATE TABLE notifications (
        number INTEGER PRIMARY KEY, event_id BLOB NOT NULL, session_storage_id TEXT NOT NULL,
        kind TEXT NOT NULL, title TEXT NOT NULL, body TEXT NOT NULL, dedupe_key TEXT NOT NULL,
        play_sound INTEGER NOT NULL, observed_at INTEGER NOT NULL, decided_at INTEGER NOT NULL,
        state TEXT NOT NULL, told_at INTEGER);
    CREATE INDEX notifications_by_dedupe_key ON notifications (dedupe_key, number);
    CREATE INDEX notifications_pending ON notifications (number) WHERE state = 'pending';
    CREATE TABLE settings (key TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;

    INSERT INTO sessions VALUES
        (4, 'claudeCode|S1',
         '{"lastSeenAt":"2026-11-15T03:30:55.123Z","status":"needsAttention"}'),
        (5, 'claudeCode|S2', 'damaged');
    INSERT INTO events VALUES
        (7, x'00112233445566778899AABBCCDDEEFF', 4, 1700000000000001, 'applied', '{"event":1}'),
        (9, x'FF112233445566778899AABBCCDDEEFF', NULL, 1600000000000002, 'noSession', '{"e":2}');
    INSERT INTO notifications VALUES
        (3, x'00112233445566778899AABBCCDDEEFF', 'claudeCode|S1', 'completion', 'title', 'body',
         'claudeCode|S1|completion', 1, 1700000000000001, 1700000000000003, 'told',
         1700000000000004),
        (4, x'FF112233445566778899AABBCCDDEEFF', 'claudeCode|S1', 'attention', 'title', 'body',
         'claudeCode|S1|attention', 0, 1700000000000005, 1700000000000006, 'pending', NULL);
    INSERT INTO settings VALUES ('k', 'v');
    PRAGMA user_version = 1;
)sql";

// Every row with every column, as SQL literals.
std::vector<std::string> rowsOf(SQLite::Database& database, const std::string& table) {
    SQLite::Statement query{database, "SELECT * FROM " + table + " ORDER BY 1"};
    std::vector<std::string> rows;
    while (query.executeStep()) {
        std::string row;
        for (int i = 0; i < query.getColumnCount(); ++i) {
            SQLite::Statement quoted{database, "SELECT quote(?)"};
            const auto value = query.getColumn(i);
            if (value.isBlob())
                quoted.bind(1, value.getBlob(), value.getBytes());
            else if (value.isInteger())
                quoted.bind(1, value.getInt64());
            else if (!value.isNull())
                quoted.bind(1, value.getString());
            quoted.executeStep();
            row += (i > 0 ? "|" : "") + quoted.getColumn(0).getString();
        }
        rows.push_back(row);
    }
    return rows;
}

TEST(StoreSchema, ofTheFirstVersionKeepsEveryRow) {
    auto database = inMemory();
    database.exec(firstVersion);
    std::map<std::string, std::vector<std::string>> before;
    for (const std::string table : {"events", "settings"}) before[table] = rowsOf(database, table);
    StoreSchema::migrate(database);
    EXPECT_EQ(StoreSchema::version(database), StoreSchema::currentVersion());
    for (const auto& [table, rows] : before) EXPECT_EQ(rowsOf(database, table), rows) << table;
    EXPECT_EQ(before["events"].front(),
              "7|X'00112233445566778899AABBCCDDEEFF'|4|1700000000000001|'applied'|"
              "'{\"event\":1}'");
    EXPECT_EQ(rowsOf(database, "sessions"),
              (std::vector<std::string>{
                  "4|'claudeCode|S1'|'{\"lastSeenAt\":\"2026-11-15T03:30:55.123Z\","
                  "\"status\":\"needsAttention\"}'|1794713455123000|'needsAttention'|NULL",
                  "5|'claudeCode|S2'|'damaged'|0|''|NULL"}));
    EXPECT_EQ(rowsOf(database, "notifications"),
              (std::vector<std::string>{
                  "3|X'00112233445566778899AABBCCDDEEFF'|'claudeCode|S1'|'completion'|'title'|"
                  "'body'|'claudeCode|S1|completion'|1|1700000000000001|1700000000000003",
                  "4|X'FF112233445566778899AABBCCDDEEFF'|'claudeCode|S1'|'attention'|'title'|"
                  "'body'|'claudeCode|S1|attention'|0|1700000000000005|1700000000000006"}));
    EXPECT_EQ(rowsOf(database, "deliveries"),
              (std::vector<std::string>{"3|'lines'|'told'|1|1700000000000003|1700000000000004|3",
                                        "4|'lines'|'pending'|0|1700000000000006|NULL|NULL"}));

    const std::string insert = "INSERT INTO events (id, observed_at, effect, record) VALUES ";
    const std::string id = "x'00112233445566778899AABBCCDDEEFF'";
    EXPECT_THROW(database.exec(insert + "(" + id + ", 1700000000000001, 'applied', '')"),
                 SQLite::Exception);
    EXPECT_EQ(rowsOf(database, "events"), before["events"]);
}

TEST(StoreSchema, isMadeFromNothing) {
    auto database = inMemory();
    EXPECT_EQ(StoreSchema::version(database), 0);
    StoreSchema::migrate(database);
    EXPECT_EQ(StoreSchema::version(database), StoreSchema::currentVersion());
    EXPECT_EQ(tables(database), (std::set<std::string>{"deliveries", "events", "notifications",
                                                       "presence", "reminders", "session_marks",
                                                       "sessions", "settings", "untold"}));
}

TEST(StoreSchema, thatIsCurrentIsLeftAlone) {
    auto database = inMemory();
    StoreSchema::migrate(database);
    database.exec("INSERT INTO settings (key, value) VALUES ('k', 'v')");
    const int changes = database.getTotalChanges();
    StoreSchema::migrate(database);
    EXPECT_EQ(database.getTotalChanges(), changes);
    EXPECT_EQ(database.execAndGet("SELECT value FROM settings").getString(), "v");
}

TEST(StoreSchema, ofAStepThatFailsIsTheOneBefore) {
    auto database = inMemory();
    // In the way of the first step, which has made other tables by then.
    database.exec("CREATE TABLE notifications (x)");
    EXPECT_THROW(StoreSchema::migrate(database), SQLite::Exception);
    EXPECT_EQ(StoreSchema::version(database), 0);
    EXPECT_EQ(tables(database), std::set<std::string>{"notifications"});

    database.exec("DROP TABLE notifications");
    StoreSchema::migrate(database);
    EXPECT_EQ(StoreSchema::version(database), StoreSchema::currentVersion());
}

}  // namespace
}  // namespace tallowbrook::host
