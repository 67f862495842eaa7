#include "Watch/OpenNotifications.h"

namespace tallowbrook::host {
namespace {

bool isLeftBehind(NotificationKind kind, SessionStatus status) {
    switch (kind) {
        case NotificationKind::attention:
        case NotificationKind::reminder:
            return status != SessionStatus::needsAttention;
        case NotificationKind::completion:
            return status != SessionStatus::completed;
        case NotificationKind::failure:
            break;
    }
    return false;
}

}  // namespace

void OpenNotifications::add(std::int64_t number, const NotificationContent& content) {
    bySession()[content.sessionStorageID].push_back({number, content.kind, content.eventID});
}

void OpenNotifications::followStatus(const SessionSnapshot& session) {
    const auto found = bySession().find(session.id());
    if (found == bySession().end()) return;
    std::erase_if(found->second, [&](const Open& open) {
        if (!isLeftBehind(open.kind, session.status)) return false;
        if (outbox_.fold(open.number))
            outbox_.noteUntold({open.eventID, session.id(), UntoldReason::folded, now_, {}});
        return true;
    });
}

// Read once: most batches meet an empty outbox, and a large backlog must not be read for each
// event.
OpenNotifications::BySession& OpenNotifications::bySession() {
    if (!bySession_) {
        bySession_.emplace();
        for (const auto& [number, content, observedAt] : outbox_.notBegun())
            (*bySession_)[content.sessionStorageID].push_back(
                {number, content.kind, content.eventID});
    }
    return *bySession_;
}

}  // namespace tallowbrook::host
