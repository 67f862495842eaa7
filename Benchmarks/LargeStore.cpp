#include "LargeStore.h"

#include <fmt/core.h>

#include <cstdlib>
#include <fstream>

#include "Domain/EventCoding.h"
#include "Preferences/HostSettings.h"
#include "SampleSegment.h"
#include "SessionState/SessionReducer.h"
#include "Store/EventStore.h"
#include "Store/StoreSchema.h"

namespace tallowbrook::bench {
namespace {

using namespace tallowbrook::host;

constexpr int recentSessions = 40;
constexpr int eventsAtOnce = 100'000;

EventStore open(const TallowbrookPaths& paths) {
    auto store = EventStore::open(paths);
    if (store) return std::move(*store);
    fmt::print(stderr, "benchmark: {}\n", store.error());
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

void addSessions(EventStore& store, Instant now) {
    auto transaction = store.beginWriting();
    for (int session = 0; session < largeStoreSessions; ++session)
        store.addSession(snapshotOf(session, seenAt(session, now)));
    transaction.commit();
}

void addEvents(EventStore& store, Instant now) {
    auto events = sampleEvents(eventsAtOnce, largeStoreSessions);
    for (int added = 0; added < largeStoreEvents; added += eventsAtOnce) {
        auto transaction = store.beginWriting();
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
    EventStore store = open(paths);
    const Instant now = std::chrono::floor<std::chrono::milliseconds>(currentInstant());
    addSessions(store, now);
    addEvents(store, now);
}

void refreshRecentSessions(const TallowbrookPaths& paths) {
    EventStore store = open(paths);
    const Instant now = std::chrono::floor<std::chrono::milliseconds>(currentInstant());
    auto transaction = store.beginWriting();
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
