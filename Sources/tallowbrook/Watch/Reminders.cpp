#include "Watch/Reminders.h"

#include <algorithm>

#include "Notifications/ReminderPolicy.h"
#include "Preferences/HostSettings.h"
#include "Watch/Hold.h"
#include "Watch/Interpretation.h"
#include "Watch/Presence.h"
#include "Watch/SessionMarking.h"

namespace tallowbrook::host {
namespace {

// The count of the waiting period that the session is in.
ReminderCount countOf(const SessionSnapshot& session, Outbox& outbox) {
    const auto stored = outbox.reminderCount(session.key);
    if (stored && stored->waitingSince == session.statusSince) return *stored;
    return {.waitingSince = session.statusSince};
}

Instant after(Instant start, Seconds span) {
    return start + std::chrono::ceil<Instant::duration>(span);
}

}  // namespace

Reminders::Outlook Reminders::look(Database& database, Instant now) const {
    Outlook outlook;
    if (interval <= Seconds{0}) return outlook;
    Outbox outbox{database};
    const auto shownSince = now - std::chrono::duration_cast<Instant::duration>(listedFor);
    for (const auto& session : sessionsShownWaiting(database, shownSince)) {
        if (session.key.isSetupCheck()) continue;
        auto count = countOf(session, outbox);
        // By a clock that was set back since.
        if (count.lastSentAt > now) count.lastSentAt = distantPast;
        if (Seconds{now - count.lastSentAt} >= interval) {
            if (auto content = ReminderPolicy::due(session, count.sent, interval, preferences, now,
                                                   calendar)) {
                wordWithName(*content, session, SessionMarking{database, now}.nameOf(session));
                ++count.sent;
                count.lastSentAt = now;
                outlook.due.push_back({session.key, std::move(*content), count});
            }
        }
        const auto next = nextLook(session, count, now);
        if (next && (!outlook.next || *next < *outlook.next)) outlook.next = next;
    }
    return outlook;
}

std::optional<Instant> Reminders::nextLook(const SessionSnapshot& session,
                                           const ReminderCount& count, Instant now) const {
    // Someone who wants none now says so again when that changes.
    if (!preferences.enabled || preferences.paused || !preferences.notifyOnAttention)
        return std::nullopt;
    if (count.sent >= ReminderPolicy::maxReminders) return std::nullopt;
    const auto earned = after(session.statusSince, interval * (count.sent + 1));
    const auto apart = after(std::max(count.lastSentAt, session.statusSince), interval);
    const auto next = std::max(earned, apart);
    if (next > now) return next;
    if (preferences.quietHours.contains(now, calendar))
        return endOf(preferences.quietHours, now, calendar);
    // It is due, and the system had no random bytes for its id.
    return now + std::chrono::minutes{1};
}

void Reminders::tell(const DueReminder& reminder, Outbox& outbox, Instant now,
                     const std::vector<std::string>& channels) {
    outbox.add(reminder.content, now, now, channels);
    outbox.setReminderCount(reminder.session, reminder.count);
}

}  // namespace tallowbrook::host
