#include "Watch/Absence.h"

#include "Notifications/NotificationPolicy.h"
#include "Preferences/HostSettings.h"
#include "Store/PresenceStore.h"
#include "Store/SessionStore.h"

namespace tallowbrook::host {
namespace {

struct Counts {
    int waiting = 0;
    int finished = 0;
    int failed = 0;
};

Counts count(const std::set<std::string>& ids, const NotificationPreferences& preferences,
             Database& database) {
    Counts counts;
    // By what they are now, not by what was missed: a request that was answered meanwhile is over.
    for (auto& stored : SessionStore{database}.sessions(ids)) {
        const auto presence = PresenceStore{database}.presence(stored.key);
        const auto session = shownAs(std::move(stored), presence);
        if (session.status == SessionStatus::needsAttention && preferences.notifyOnAttention)
            ++counts.waiting;
        if (session.status == SessionStatus::completed && preferences.notifyOnCompletion)
            ++counts.finished;
        if (session.status == SessionStatus::failed && preferences.notifyOnFailure) ++counts.failed;
    }
    return counts;
}

std::string sentence(const Counts& counts) {
    std::string text;
    const auto add = [&](int number, const char* words) {
        if (number > 0) text += (text.empty() ? "" : ", ") + std::to_string(number) + " " + words;
    };
    add(counts.waiting, counts.waiting == 1 ? "waits" : "wait");
    add(counts.finished, "finished");
    add(counts.failed, "failed");
    return text.empty() ? text : text + ".";
}

}  // namespace

std::optional<NotificationContent> awayNotification(const std::set<std::string>& sessions,
                                                    const NotificationPreferences& preferences,
                                                    Database& database, Instant now,
                                                    const Calendar& calendar) {
    if (sessions.empty() || !preferences.enabled || preferences.paused ||
        preferences.quietHours.contains(now, calendar))
        return std::nullopt;
    const auto body = sentence(count(sessions, preferences, database));
    const auto id = randomUUID();
    if (body.empty() || !id) return std::nullopt;
    return NotificationContent{.kind = NotificationKind::reminder,
                               .title = "While you were away",
                               .body = body,
                               .sessionStorageID = "",
                               .eventID = *id,
                               .dedupeKey = "host|away",
                               .playSound = preferences.playSound};
}

}  // namespace tallowbrook::host
