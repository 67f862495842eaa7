#include "SessionState/AgentPresence.h"

namespace tallowbrook {
namespace {

void show(SessionSnapshot& session, SessionStatus status, Instant since) {
    // A status that the events say, too, keeps the time at which they said so.
    if (session.status == status) return;
    session.status = status;
    session.statusSince = since;
    if (status != SessionStatus::needsAttention) session.attention.reset();
}

std::string evidenceText(Provider provider, AgentEvidence evidence) {
    const std::string agent{displayName(provider)};
    return evidence == AgentEvidence::turns ? agent + "'s own record of its turns"
                                            : agent + "'s own record";
}

std::string endText(Provider provider, const AgentPresence& presence, const std::string& seen) {
    if (presence.evidence == AgentEvidence::lock)
        return "No process of " + std::string{displayName(provider)} +
               " keeps the session open any more, as was seen at " + seen + ".";
    const std::string number =
        presence.process ? " (" + std::to_string(presence.process->pid) + ")" : "";
    return "Its process" + number + " is gone, as was seen at " + seen + ".";
}

std::string saysText(AgentState state, const std::string& since) {
    switch (state) {
        case AgentState::working:
            return "working since " + since;
        case AgentState::waiting:
            return "waiting for you since " + since;
        case AgentState::idle:
            return "idle since " + since;
        case AgentState::finished:
            return "that the turn was completed at " + since;
        case AgentState::failed:
            return "that the turn failed at " + since;
        case AgentState::interrupted:
            return "that the turn was interrupted at " + since;
        case AgentState::unknown:
        case AgentState::gone:
            break;
    }
    return {};
}

}  // namespace

bool AgentPresence::holdsFor(const SessionSnapshot& session) const {
    return state != AgentState::unknown && judgedAt == session.lastAppliedAt;
}

SessionSnapshot shownAs(SessionSnapshot session, const std::optional<AgentPresence>& presence) {
    if (!presence || !presence->holdsFor(session)) return session;
    switch (presence->state) {
        case AgentState::unknown:
            break;
        case AgentState::working:
            show(session, SessionStatus::working, presence->since);
            break;
        case AgentState::waiting:
            show(session, SessionStatus::needsAttention, presence->since);
            if (!session.attention) session.attention = AttentionKind::permission;
            break;
        // No event told how the turn ended, as when the user broke it off.
        case AgentState::idle:
        case AgentState::interrupted:
            show(session, SessionStatus::interrupted, presence->since);
            break;
        case AgentState::finished:
            show(session, SessionStatus::completed, presence->since);
            break;
        case AgentState::failed:
            show(session, SessionStatus::failed, presence->since);
            break;
        case AgentState::gone:
            show(session, SessionStatus::completed, presence->since);
            session.sessionEnded = true;
            session.endedAt = presence->since;
            break;
    }
    return session;
}

std::string presenceText(Provider provider, const AgentPresence& presence,
                         const std::function<std::string(Instant)>& formatTime) {
    if (presence.state == AgentState::unknown) return {};
    const std::string since = formatTime(presence.since);
    if (presence.state == AgentState::gone) return endText(provider, presence, since);
    return evidenceText(provider, presence.evidence) + " says " + saysText(presence.state, since) +
           ".";
}

}  // namespace tallowbrook
