#include "Watch/Withholding.h"

#include <map>
#include <optional>
#include <utility>

#include "Store/SessionStore.h"

namespace tallowbrook::host {
namespace {

// By number, of all channels.
std::map<std::int64_t, StoredNotification> pendingBehind(std::int64_t number, Outbox& outbox,
                                                         const std::vector<std::string>& channels) {
    std::map<std::int64_t, StoredNotification> found;
    for (const auto& channel : channels)
        for (auto& delivery : outbox.pending(channel))
            if (delivery.notification.number > number)
                found.try_emplace(delivery.notification.number, std::move(delivery.notification));
    return found;
}

// The next one then comes an interval after this one would have, however many there were.
void forgetReminder(const SessionKey& key, Outbox& outbox) {
    auto count = outbox.reminderCount(key);
    if (!count || count->sent == 0) return;
    --count->sent;
    outbox.setReminderCount(key, *count);
}

}  // namespace

bool Withholding::run(Database& database, const std::vector<std::string>& channels,
                      const Mutes& mutes, bool tellsWhileLooking, Instant now) {
    Outbox outbox{database};
    const auto pending = pendingBehind(lookedAtUpTo_, outbox, channels);
    if (pending.empty()) return true;
    if (!tellsWhileLooking && !std::exchange(hasAsked_, true)) looking_.ask();
    if (looking_.isAwaited()) return false;
    hasAsked_ = false;
    auto transaction = database.beginWriting();
    for (const auto& [number, notification] : pending)
        lookAt(notification, database, mutes, tellsWhileLooking, now);
    transaction.commit();
    lookedAtUpTo_ = pending.rbegin()->first;
    return true;
}

void Withholding::lookAt(const StoredNotification& notification, Database& database,
                         const Mutes& mutes, bool tellsWhileLooking, Instant now) {
    const auto& content = notification.content;
    // What is told of several sessions at once belongs to none.
    const auto sessions = SessionStore{database}.sessions({content.sessionStorageID});
    if (sessions.empty()) return;
    const auto& session = sessions.front();
    std::optional<UntoldReason> reason;
    if (!tellsWhileLooking && looking_.isOn(session)) reason = UntoldReason::lookedAt;
    if (mutes.silence(session)) reason = UntoldReason::muted;
    if (!reason) return;
    Outbox outbox{database};
    outbox.holdBack(notification.number);
    outbox.noteUntold({.eventID = content.eventID,
                       .session = content.sessionStorageID,
                       .reason = *reason,
                       .at = now,
                       .turn = std::nullopt});
    if (reason == UntoldReason::lookedAt && content.kind == NotificationKind::reminder)
        forgetReminder(session.key, outbox);
}

}  // namespace tallowbrook::host
