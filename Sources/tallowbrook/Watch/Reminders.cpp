#include "Watch/Reminders.h"

#include "Notifications/ReminderPolicy.h"

namespace tallowbrook::host {
namespace {

// The count of the waiting period that the session is in.
ReminderCount countOf(const SessionSnapshot& session, EventStore& store) {
    const auto stored = store.reminderCount(session.key);
    if (stored && stored->waitingSince == session.statusSince) return *stored;
    return {.waitingSince = session.statusSince};
}

}  // namespace

void Reminders::run(EventStore& store, Instant now) const {
    for (const auto& session : store.sessions()) {
        if (session.status != SessionStatus::needsAttention || session.key.isSetupCheck()) continue;
        auto count = countOf(session, store);
        if (Seconds{now - count.lastSentAt} < interval) continue;
        const auto reminder =
            ReminderPolicy::due(session, count.sent, interval, preferences, now, calendar);
        if (!reminder) continue;
        ++count.sent;
        count.lastSentAt = now;
        auto transaction = store.beginWriting();
        store.addNotification(*reminder, now, now);
        store.setReminderCount(session.key, count);
        transaction.commit();
    }
}

}  // namespace tallowbrook::host
