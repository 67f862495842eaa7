#include "View/SessionText.h"

#include <algorithm>

#include "Domain/AgentProfile.h"

namespace tallowbrook::host {
namespace {

// Agents name errors as programs do: "server_error".
std::string asWords(std::string name) {
    std::ranges::replace(name, '_', ' ');
    return name;
}

}  // namespace

std::string agentText(const ListedSession& session) {
    return std::string{displayName(session.snapshot.key.provider)};
}

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
    if (session.status == SessionStatus::stale) return session.snapshot.lastSeenAt;
    if (hasEnded(session)) return session.snapshot.endedAt.value_or(session.snapshot.statusSince);
    return session.snapshot.statusSince;
}

bool hasEnded(const ListedSession& session) {
    return session.status == SessionStatus::completed && session.snapshot.sessionEnded;
}

Symbol symbolOf(SessionStatus status) {
    switch (status) {
        case SessionStatus::needsAttention:
            return Symbols::waiting;
        case SessionStatus::failed:
            return Symbols::failed;
        case SessionStatus::working:
            return Symbols::working;
        case SessionStatus::stale:
            return Symbols::stale;
        case SessionStatus::interrupted:
            return Symbols::interrupted;
        case SessionStatus::completed:
            return Symbols::completed;
        case SessionStatus::unknown:
            break;
    }
    return Symbols::unknown;
}

Style styleOf(SessionStatus status) {
    switch (status) {
        case SessionStatus::needsAttention:
            return {.colour = Colour::magenta, .bold = true};
        case SessionStatus::failed:
            return {.colour = Colour::red, .bold = true};
        case SessionStatus::working:
            return {.colour = Colour::cyan};
        case SessionStatus::completed:
            return {.colour = Colour::green};
        case SessionStatus::stale:
        case SessionStatus::interrupted:
        case SessionStatus::unknown:
            break;
    }
    return {};
}

}  // namespace tallowbrook::host
