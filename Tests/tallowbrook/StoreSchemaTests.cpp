#include "StoreSchema.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

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

TEST(StoreSchema, isMadeFromNothing) {
    auto database = inMemory();
    EXPECT_EQ(StoreSchema::version(database), 0);
    StoreSchema::migrate(database);
    EXPECT_EQ(StoreSchema::version(database), StoreSchema::currentVersion());
    EXPECT_EQ(tables(database), (std::set<std::string>{"events", "notifications", "reminders",
                                                       "sessions", "settings"}));
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
