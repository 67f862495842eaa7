#include "StoredState.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "Domain/EventCoding.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

// The journal and the log belong to the database; the shared memory is made anew from the log.
void copyDatabase(const std::filesystem::path& from, const std::filesystem::path& to) {
    for (const char* suffix : {"", "-journal", "-wal"})
        if (const std::filesystem::path file = from.string() + suffix; exists(file))
            copy_file(file, to.string() + suffix);
}

void readEvents(SQLite::Database& database, StoredState& state) {
    SQLite::Statement query{database, "SELECT record FROM events"};
    while (query.executeStep()) {
        const auto event = EventCoding::decodeLine(query.getColumn(0).getString());
        state.events.insert(event ? event->sessionID.value_or("none") : "undecodable");
    }
}

void readNotifications(SQLite::Database& database, StoredState& state) {
    SQLite::Statement query{database,
                            "SELECT session_storage_id, state, told_at FROM notifications"
                            " JOIN deliveries ON notification = number"};
    while (query.executeStep()) {
        std::string session = query.getColumn(0).getString();
        session.erase(0, session.find('|') + 1);
        const std::string word = query.getColumn(1).getString();
        if (word == "told")
            state.told.emplace(session,
                               Instant{std::chrono::microseconds{query.getColumn(2).getInt64()}});
        else
            (word == "pending" ? state.pending : state.dropped).insert(session);
    }
}

}  // namespace

StoredState StoredState::of(const TallowbrookPaths& paths) {
    StoredState state;
    if (!exists(paths.databaseFile())) return state;
    const TemporaryDirectory copy;
    const auto file = copy.path / "copy.sqlite";
    copyDatabase(paths.databaseFile(), file);
    try {
        SQLite::Database database{file.string(), SQLite::OPEN_READWRITE};
        state.isSound = database.execAndGet("PRAGMA integrity_check").getString() == "ok";
        if (!database.tableExists("events")) return state;
        readEvents(database, state);
        // A kill between two steps of the schema leaves a database without it, and so without any.
        if (database.tableExists("deliveries")) readNotifications(database, state);
    } catch (const SQLite::Exception& error) {
        ADD_FAILURE() << "the database cannot be read: " << error.what();
        state.isSound = false;
    }
    return state;
}

std::multiset<std::string> StoredState::toldSessions() const {
    std::multiset<std::string> sessions;
    for (const auto& [session, at] : told) sessions.insert(session);
    return sessions;
}

}  // namespace tallowbrook
