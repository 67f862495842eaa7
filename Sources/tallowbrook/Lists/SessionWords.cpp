#include "Lists/SessionWords.h"

#include <algorithm>

#include "Domain/AgentProfile.h"
#include "Output/TimeText.h"

namespace tallowbrook::host {
namespace {

// Agents name errors as programs do: "server_error".
std::string asWords(std::string name) {
    std::ranges::replace(name, '_', ' ');
    return name;
}

}  // namespace

std::string reasonText(const ListedSession& session) {
    const auto& detail = session.snapshot.statusDetail;
    switch (session.status) {
        case SessionStatus::needsAttention:
            // The agent's own tool for a question is no news beside "has a question".
            if (AgentProfile::of(session.snapshot.key.provider).asking(detail.toolName)) return {};
            return detail.toolName.value_or("");
        case SessionStatus::failed:
            return asWords(detail.errorType.value_or(""));
        case SessionStatus::completed:
            return asWords(session.snapshot.endReason.value_or(""));
        default:
            return {};
    }
}

Instant statusSince(const ListedSession& session) {
    // It went silent with the last word that was heard of it.
    if (session.status == SessionStatus::stale) return session.snapshot.lastSeenAt;
    const auto shown = shownAs(session.snapshot, session.presence);
    if (session.status == SessionStatus::completed && shown.sessionEnded)
        return shown.endedAt.value_or(shown.statusSince);
    return shown.statusSince;
}

std::string statusPhrase(const ListedSession& session, Instant now) {
    const auto reason = reasonText(session);
    return statusText(session) + (reason.empty() ? "" : " (" + reason + ")") + ", " +
           TimeText::lasting(statusSince(session), now);
}

}  // namespace tallowbrook::host
