#include "Lists/UnfinishedEnd.h"

#include "Preferences/HostSettings.h"

namespace tallowbrook::host {

bool endedWithoutFinishing(const SessionSnapshot& session) {
    return session.status == SessionStatus::failed &&
           session.statusCategory == EventCategory::sessionEnded;
}

void markUnfinishedEnd(SessionSnapshot& session, const AgentEvent& sessionEnd) {
    session.statusCategory = EventCategory::sessionEnded;
    session.sessionEnded = true;
    session.endedAt = sessionEnd.observedAt;
    session.endReason = sessionEnd.detail.endReason;
}

std::string explanationText(const SessionSnapshot& session, Instant now,
                            const std::function<std::string(Instant)>& formatTime) {
    if (!endedWithoutFinishing(session)) return session.explanation(now, staleAfter, formatTime);
    return "The session ended without finishing at " + formatTime(session.statusSince) +
           (session.endReason ? " (reason: " + *session.endReason + ")" : "") +
           ". The end of its last turn was never reported.";
}

}  // namespace tallowbrook::host
