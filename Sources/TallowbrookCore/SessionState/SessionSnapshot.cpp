#include "SessionState/SessionSnapshot.h"

namespace tallowbrook {

std::string SessionKey::storageID() const {
    const std::string_view name = rawValue(provider);
    // Asked for each event, so put together in one piece.
    std::string text;
    text.reserve(name.size() + 1 + sessionID.size());
    return text.append(name).append("|").append(sessionID);
}

bool SessionKey::isSetupCheck() const { return sessionID.starts_with(setupCheckPrefix); }

int sortRank(SessionStatus status) {
    switch (status) {
        case SessionStatus::needsAttention:
            return 0;
        case SessionStatus::failed:
            return 1;
        case SessionStatus::working:
            return 2;
        case SessionStatus::stale:
            return 3;
        case SessionStatus::interrupted:
            return 4;
        case SessionStatus::unknown:
            return 5;
        case SessionStatus::completed:
            break;
    }
    return 6;
}

SessionSnapshot SessionSnapshot::initial(SessionKey key, const AgentEvent& firstEvent) {
    return {
        .key = std::move(key),
        .origin = firstEvent.origin,
        .status = SessionStatus::unknown,
        .attention = std::nullopt,
        .statusEventType = firstEvent.eventType,
        .statusCategory = firstEvent.category,
        .statusDetail = firstEvent.detail,
        .statusSince = firstEvent.observedAt,
        .firstSeenAt = firstEvent.observedAt,
        .lastSeenAt = firstEvent.observedAt,
        .lastAppliedAt = distantPast,
        .lastEventType = firstEvent.eventType,
        .cwd = firstEvent.cwd,
        .tty = firstEvent.tty,
        .sessionEnded = false,
        .endedAt = std::nullopt,
        .endReason = std::nullopt,
        .promptCount = 0,
        .lastCompletedTurnID = std::nullopt,
        .lastSignature = std::nullopt,
        .lastSignatureAt = std::nullopt,
        .eventCount = 0,
    };
}

std::string SessionSnapshot::projectLabel() const {
    if (!cwd || cwd->empty()) return "Project unavailable";
    // Shells and editors leave slashes at the end.
    const auto last = cwd->find_last_not_of('/');
    if (last == std::string::npos) return *cwd;  // the root itself
    const auto slash = cwd->rfind('/', last);
    const auto first = slash == std::string::npos ? 0 : slash + 1;
    return cwd->substr(first, last - first + 1);
}

SessionStatus SessionSnapshot::displayStatus(Instant now, Seconds staleAfter) const {
    const bool silent = Seconds{now - lastSeenAt} > staleAfter;
    return status == SessionStatus::working && silent ? SessionStatus::stale : status;
}

}  // namespace tallowbrook

std::size_t std::hash<tallowbrook::SessionKey>::operator()(
    const tallowbrook::SessionKey& key) const noexcept {
    // Spread the agent over the whole word, so that both agents' sessions stay apart.
    constexpr std::size_t spread = 0x9e3779b9;
    return std::hash<std::string>{}(key.sessionID) ^
           (static_cast<std::size_t>(key.provider) * spread);
}
