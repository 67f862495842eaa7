// The sentences that tell the user why a session has its status.
#include "SessionState/SessionSnapshot.h"

namespace tallowbrook {
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
