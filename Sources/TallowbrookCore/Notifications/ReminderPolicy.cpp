#include "Notifications/ReminderPolicy.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace tallowbrook {

namespace {

bool isWaiting(const SessionSnapshot& session) {
    return session.status == SessionStatus::needsAttention && !session.sessionEnded &&
           !session.key.isSetupCheck();
}

bool mayRemind(const NotificationPreferences& preferences, Instant now, const Calendar& calendar) {
    return preferences.enabled && !preferences.paused && preferences.notifyOnAttention &&
           !preferences.quietHours.contains(now, calendar);
}

std::string minutesText(Instant::duration waited) {
    const auto minutes = std::chrono::duration_cast<std::chrono::minutes>(waited).count();
    return std::to_string(std::max<decltype(minutes)>(minutes, 1));
}

}  // namespace

int ReminderPolicy::earned(Seconds waited, Seconds interval) {
    // Written with "not", so that a NaN earns nothing.
    if (!(interval > Seconds{0}) || !(waited > Seconds{0})) return 0;
    constexpr double firstBeyondInt64 = 9223372036854775808.0;
    const double quotient = waited / interval;
    if (!(quotient < firstBeyondInt64)) {
        std::fputs("tallowbrook: the count of reminders is out of range\n", stderr);
        std::abort();
    }
    return static_cast<int>(std::min<double>(quotient, maxReminders));
}

std::optional<NotificationContent> ReminderPolicy::due(const SessionSnapshot& session, int sent,
                                                       Seconds interval,
                                                       const NotificationPreferences& preferences,
                                                       Instant now, const Calendar& calendar) {
    if (!isWaiting(session) || !(interval > Seconds{0})) return std::nullopt;
    const auto waited = now - session.statusSince;
    if (sent >= earned(waited, interval)) return std::nullopt;
    if (!mayRemind(preferences, now, calendar)) return std::nullopt;
    // Two reminders under one id would replace each other; without an id it is due again later.
    const auto id = randomUUID();
    if (!id) return std::nullopt;

    // Stands in for the event that a reminder does not have.
    AgentEvent event;
    event.id = *id;
    event.origin = session.origin;
    NotificationContent content = NotificationPolicy::makeContent(
        NotificationKind::reminder, session, event, preferences.playSound);
    content.title +=
        session.attention == AttentionKind::input ? " for your input" : " for permission";
    content.body = session.projectLabel() + " — waiting for " + minutesText(waited) + " min.";
    return content;
}

}  // namespace tallowbrook
