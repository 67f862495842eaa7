#include "SessionState/SessionSnapshot.h"

namespace tallowbrook {

std::string SessionKey::storageID() const {
    const std::string_view name = rawValue(provider);
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

namespace {

// `text` between `before` and `after`; nothing at all when it is absent.
std::string enclosed(const char* before, const std::optional<std::string>& text,
                     const char* after) {
    return text ? before + *text + after : std::string{};
}

std::string workingText(const SessionSnapshot& session, const std::string& since) {
    if (session.statusCategory != EventCategory::activity)
        return "A prompt was submitted at " + since +
               ". No completion event has been observed yet.";
    return "Activity resumed at " + since + " after an attention request (" +
           session.statusEventType + ").";
}

std::string attentionText(const SessionSnapshot& session, const std::string& since) {
    const std::string agent{displayName(session.key.provider)};
    const std::string seen = " at " + since + " (" + session.statusEventType + "). ";
    if (session.attention == AttentionKind::input)
        return "The agent asked for your input" + seen + "Respond in " + agent + ".";
    return "A permission request" + enclosed(" for ", session.statusDetail.toolName, "") +
           " was observed" + seen + "Approve or deny it in " + agent +
           "; Tallowbrook never answers it.";
}

std::string openCompletionText(const SessionSnapshot& session, const std::string& since) {
    return "The last turn finished at " + since + " (" + session.statusEventType +
           "). The session is still open.";
}

std::string endedText(const SessionSnapshot& session, const std::string& end) {
    return "The session ended at " + end + enclosed(" (reason: ", session.endReason, ")") + ".";
}

std::string staleText(const std::string& lastSeen) {
    return "No recent event since " + lastSeen +
           ". The agent may still be working, or it stopped without reporting (for example after "
           "an interrupt).";
}

std::string unknownText(const SessionSnapshot& session, const std::string& since) {
    if (session.statusCategory != EventCategory::sessionStarted)
        return "Session seen at " + since + ", but no event has established its status yet.";
    return "Session seen at " + since + " (" + session.statusEventType +
           enclosed(": ", session.statusDetail.sessionSource, "") +
           "). No prompt has been observed yet.";
}

}  // namespace

std::string SessionSnapshot::explanation(
    Instant now, Seconds staleAfter, const std::function<std::string(Instant)>& formatTime) const {
    switch (displayStatus(now, staleAfter)) {
        case SessionStatus::working:
            return workingText(*this, formatTime(statusSince));
        case SessionStatus::needsAttention:
            return attentionText(*this, formatTime(statusSince));
        case SessionStatus::completed:
            if (!sessionEnded) return openCompletionText(*this, formatTime(statusSince));
            return endedText(*this, formatTime(endedAt.value_or(statusSince)));
        case SessionStatus::failed:
            return "The last turn failed at " + formatTime(statusSince) +
                   enclosed(" (", statusDetail.errorType, ")") + ".";
        case SessionStatus::interrupted:
            return "The turn was interrupted at " + formatTime(statusSince) + " (" +
                   statusEventType + ").";
        case SessionStatus::stale:
            return staleText(formatTime(lastSeenAt));
        case SessionStatus::unknown:
            break;
    }
    return unknownText(*this, formatTime(statusSince));
}

}  // namespace tallowbrook

std::size_t std::hash<tallowbrook::SessionKey>::operator()(
    const tallowbrook::SessionKey& key) const noexcept {
    // Spread the agent over the whole word, so that both agents' sessions stay apart.
    constexpr std::size_t spread = 0x9e3779b9;
    return std::hash<std::string>{}(key.sessionID) ^
           (static_cast<std::size_t>(key.provider) * spread);
}
