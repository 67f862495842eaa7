// A database on a data home of its own, and what tests put into it.
#pragma once

#include <SQLiteCpp/Database.h>
#include <gtest/gtest.h>

#include <string>

#include "Store/Database.h"
#include "Store/Outbox.h"
#include "Store/SessionStore.h"
#include "Store/Settings.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {

struct DatabaseAtHome {
    TemporaryDirectory directory;
    TallowbrookPaths paths{directory.path / "data"};

    Database open() const {
        auto database = Database::open(paths);
        if (!database) throw SQLite::Exception(database.error().text());
        return std::move(*database);
    }

    // A second connection, to do what the stores have no operation for.
    SQLite::Database connection() const {
        return SQLite::Database{paths.databaseFile().string(), SQLite::OPEN_READWRITE};
    }
    void execute(const std::string& sql) const { connection().exec(sql); }
    std::string text(const std::string& query) const {
        return connection().execAndGet(query).getString();
    }
    int rows(const std::string& table) const {
        return connection().execAndGet("SELECT count(*) FROM " + table).getInt();
    }
};

// Different ids for different numbers.
inline UUID numberedID(std::uint8_t number) {
    UUID id = sampleID();
    id.data[15] = number;
    return id;
}

// The end of a turn of session "S1".
inline AgentEvent numberedEvent(std::uint8_t number) {
    AgentEvent event = minimalEvent();
    event.id = numberedID(number);
    event.sessionID = "S1";
    event.cwd = "/Users/x/proj";
    return event;
}

// The channel of most tests.
inline const std::vector<std::string> lines{"lines"};

inline NotificationContent numberedContent(std::uint8_t number) {
    return {.kind = NotificationKind::completion,
            .title = "title " + std::to_string(number),
            .body = "body",
            .sessionStorageID = "claudeCode|S1",
            .eventID = numberedID(number),
            .dedupeKey = "claudeCode|S1|completion",
            .playSound = false};
}

}  // namespace tallowbrook::host
