#include "Watch/ClockStep.h"

#include <algorithm>
#include <chrono>

#include "Store/SessionStore.h"

namespace tallowbrook::host {
namespace {

constexpr std::chrono::seconds nearEnough{1};

void bringBack(std::optional<Instant>& time, Instant now) {
    if (time) time = std::min(*time, now);
}

void bringBack(SessionSnapshot& session, Instant now) {
    for (Instant* time : {&session.statusSince, &session.firstSeenAt, &session.lastSeenAt})
        *time = std::min(*time, now);
    bringBack(session.endedAt, now);
    bringBack(session.lastSignatureAt, now);
    forgetOrder(session);
}

}  // namespace

std::optional<AgentEvent> asOfNow(const AgentEvent& event, Instant now) {
    if (event.observedAt <= now) return std::nullopt;
    AgentEvent seen = event;
    seen.observedAt = now;
    return seen;
}

bool isFarAhead(const AgentEvent& event, Instant now) {
    return event.observedAt > now + nearEnough;
}

void forgetOrder(SessionSnapshot& session) { session.lastAppliedAt = distantPast; }

void bringSessionsBack(Database& database, Instant now) {
    SessionStore store{database};
    const auto firstLater = now + Instant::duration{1};
    // Most passes find none, and then write nothing.
    if (store.sessionsSeenSince(firstLater).empty()) return;
    auto transaction = database.beginWriting();
    for (auto& session : store.sessionsSeenSince(firstLater)) {
        bringBack(session, now);
        if (const auto stored = store.session(session.key))
            store.updateSession(stored->number, session);
    }
    transaction.commit();
}

}  // namespace tallowbrook::host
