#include "LargeStore.h"

#include <fmt/core.h>

#include <cstdlib>
#include <fstream>

#include "Domain/EventCoding.h"
#include "Preferences/HostSettings.h"
#include "SampleSegment.h"
#include "SessionState/SessionReducer.h"
#include "Store/SessionStore.h"
#include "Store/StoreSchema.h"

namespace tallowbrook::bench {
namespace {

using namespace tallowbrook::host;

constexpr int recentSessions = 40;
constexpr int eventsAtOnce = 100'000;

Database open(const TallowbrookPaths& paths) {
    auto database = Database::open(paths);
    if (database) return std::move(*database);
    fmt::print(stderr, "benchmark: {}\n", database.error().text());
    std::exit(1);
}

// A session after eight of its events, at `lastSeenAt`.
SessionSnapshot snapshotOf(int session, Instant lastSeenAt) {
    const SessionReducer reducer{duplicateWindow};
    std::optional<SessionSnapshot> snapshot;
    for (auto& event : sampleEvents(8, 1)) {
        event.sessionID = fmt::format("{:08x}-99d7-4dd1-904d-03e2b5d32756", session * 214'013u);
        event.cwd = fmt::format("/Users/dev/Developer/project-{}", session % 100);
        event.observedAt += lastSeenAt - currentInstant();
        snapshot = reducer.reduce(std::move(snapshot), event).current;
    }
    snapshot->eventCount = largeStoreEvents / largeStoreSessions;
    return *snapshot;
}

// Half an hour apart, so that the oldest was heard of a year ago.
Instant seenAt(int session, Instant now) {
    using std::chrono::minutes;
    return now - std::chrono::days{3} - minutes{30} * (largeStoreSessions - session);
}

void addSessions(Database& database, Instant now) {
    auto transaction = database.beginWriting();
    SessionStore store{database};
    for (int session = 0; session < largeStoreSessions; ++session)
        store.addSession(snapshotOf(session, seenAt(session, now)));
    transaction.commit();
}

void addEvents(Database& database, Instant now) {
    SessionStore store{database};
    auto events = sampleEvents(eventsAtOnce, largeStoreSessions);
    for (int added = 0; added < largeStoreEvents; added += eventsAtOnce) {
        auto transaction = database.beginWriting();
        for (int i = 0; i < eventsAtOnce; ++i) {
            auto& event = events[static_cast<std::size_t>(i)];
            event.id = randomUUID().value();
            event.observedAt = now - std::chrono::days{3} -
                               std::chrono::seconds{6} * (largeStoreEvents - added - i);
            std::string line = EventCoding::encodeLine(event);
            line.pop_back();
            store.addEvent(event, line, i % largeStoreSessions + 1, EventEffect::applied);
        }
        transaction.commit();
        fmt::print(stderr, "\rbenchmark: {} of {} events stored", added + eventsAtOnce,
                   largeStoreEvents);
    }
    fmt::print(stderr, "\n");
}

void fill(const TallowbrookPaths& paths) {
    Database database = open(paths);
    const Instant now = std::chrono::floor<std::chrono::milliseconds>(currentInstant());
    addSessions(database, now);
    addEvents(database, now);
}

void refreshRecentSessions(const TallowbrookPaths& paths) {
    Database database = open(paths);
    const Instant now = std::chrono::floor<std::chrono::milliseconds>(currentInstant());
    auto transaction = database.beginWriting();
    SessionStore store{database};
    for (int session = largeStoreSessions - recentSessions; session < largeStoreSessions; ++session)
        store.updateSession(session + 1,
                            snapshotOf(session, now - std::chrono::seconds{session % 7}));
    transaction.commit();
}

}  // namespace

TallowbrookPaths largeStore(const std::filesystem::path& cache) {
    const auto home = cache / fmt::format("large-store-{}", StoreSchema::currentVersion());
    const TallowbrookPaths paths{home};
    if (const auto complete = home / "complete"; !std::filesystem::exists(complete)) {
        std::filesystem::remove_all(home);
        std::filesystem::create_directories(home);
        fill(paths);
        std::ofstream{complete} << "\n";
    }
    refreshRecentSessions(paths);
    return paths;
}

}  // namespace tallowbrook::bench
