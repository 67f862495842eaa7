// A store on a data home of its own, and what tests put into it.
#pragma once

#include <SQLiteCpp/Database.h>
#include <gtest/gtest.h>

#include <string>

#include "Store/EventStore.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {

struct StoreAtHome {
    TemporaryDirectory directory;
    TallowbrookPaths paths{directory.path / "data"};

    EventStore open() const {
        auto store = EventStore::open(paths);
        if (!store) throw SQLite::Exception(store.error());
        return std::move(*store);
    }

    // A second connection, to do what the store has no operation for.
    SQLite::Database database() const {
        return SQLite::Database{paths.databaseFile().string(), SQLite::OPEN_READWRITE};
    }
    void execute(const std::string& sql) const { database().exec(sql); }
    std::string text(const std::string& query) const {
        return database().execAndGet(query).getString();
    }
    int rows(const std::string& table) const {
        return database().execAndGet("SELECT count(*) FROM " + table).getInt();
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
