#include "Watch/Presence.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <set>
#include <utility>

#include "Domain/AgentProfile.h"
#include "Preferences/HostSettings.h"
#include "Store/SessionStore.h"
#include "Terminal/ProcessTable.h"
#include "Watch/ProcessStart.h"

namespace tallowbrook::host {
namespace {

// How far an event and what the agent notes with it come apart.
constexpr std::chrono::milliseconds timeToNote{1000};
// A session that speaks later than this after its process was gone has another one.
constexpr std::chrono::seconds lastWords{5};
// How an ended turn ended is noted at once. Later it is of no interest.
constexpr std::chrono::minutes timeToLearnOfAnEnd{10};

bool hasEndedInATurn(const SessionSnapshot& session) {
    return session.sessionEnded && session.statusCategory == EventCategory::sessionEnded;
}

bool isAtWork(const SessionSnapshot& session) {
    return !session.sessionEnded && (session.status == SessionStatus::working ||
                                     session.status == SessionStatus::needsAttention);
}

EventCategory lastCategory(const SessionSnapshot& session) {
    for (const auto& source : AgentProfile::of(session.key.provider).sources)
        for (const auto& rule : source.events)
            if (rule.name == session.lastEventType) return rule.category;
    return EventCategory::unrecognized;
}

class Judge {
 public:
    Judge(const SessionSnapshot& session, const std::optional<SessionNotes>& notes,
          const std::optional<AgentPresence>& known, Instant now)
        : session_{session}, notes_{notes.value_or(SessionNotes{})}, known_{known}, now_{now} {
        if (known) judgement_.presence = *known;
        // An event since has made the last judgement void.
        if (!known || known->judgedAt != session.lastAppliedAt) {
            concludeNothing();
            judgement_.presence.judgedAt = session.lastAppliedAt;
        }
        if (notes_.process && (notes_.processLives || !judgement_.presence.process))
            judgement_.presence.process = notes_.process;
        if (notes_.lock == SessionLock::held) judgement_.presence.lockWasHeld = true;
    }

    Judgement judge() {
        if (session_.sessionEnded) {
            // The last turn is the one that the session's end has cut off.
            if (notes_.state && saysMoreThanTheEnd(notes_.state->state)) conclude(*notes_.state);
            return judgement_;
        }
        if (const auto evidence = evidenceOfEnd())
            concludeEnd(*evidence);
        else if (notes_.state)
            weigh(*notes_.state);
        return judgement_;
    }

 private:
    static bool saysMoreThanTheEnd(AgentState state) {
        return state == AgentState::failed || state == AgentState::interrupted;
    }

    void conclude(AgentState state, AgentEvidence evidence, Instant since) {
        judgement_.presence.state = state;
        judgement_.presence.evidence = evidence;
        judgement_.presence.since = since;
    }

    void conclude(const NotedState& noted) { conclude(noted.state, noted.evidence, noted.since); }
    void concludeNothing() { conclude(AgentState::unknown, AgentEvidence::none, {}); }

    std::optional<AgentEvidence> evidenceOfEnd() const {
        if (notes_.lock == SessionLock::held) return std::nullopt;
        if (notes_.lock == SessionLock::isFree) return AgentEvidence::lock;
        if (notes_.lock == SessionLock::missing && judgement_.presence.lockWasHeld)
            return AgentEvidence::lock;
        const auto& process = judgement_.presence.process;
        if (notes_.processLives || !process || isAlive(*process)) return std::nullopt;
        return AgentEvidence::process;
    }

    void concludeEnd(AgentEvidence evidence) {
        // A session that goes on to speak is not the one whose end was seen, as one in a container.
        // The evidence stays with the row, so that it is not believed again.
        const bool wasGone = known_ && known_->state == AgentState::gone;
        const bool speaksOn = wasGone && session_.lastAppliedAt > known_->since + lastWords;
        const bool isDisproved = known_ && known_->state == AgentState::unknown &&
                                 known_->evidence == evidence &&
                                 known_->process == judgement_.presence.process;
        if (speaksOn || isDisproved) return conclude(AgentState::unknown, evidence, {});
        if (wasGone) {
            conclude(AgentState::gone, evidence, known_->since);
            return;
        }
        conclude(AgentState::gone, evidence, now_);
    }

    // Whether what is noted is of the same time as the session's last event, or later.
    bool isAbout(const NotedState& noted) const {
        return noted.since + noted.precision > session_.lastAppliedAt;
    }

    void weigh(const NotedState& noted) {
        const bool isNewer = noted.since > session_.lastAppliedAt;
        if (noted.isPresent && saysTheSame(noted.state)) return conclude(noted);
        // That an agent waits is a part of its turn here.
        if (!noted.isPresent && noted.state == AgentState::working) {
            if (session_.status == SessionStatus::working && notes_.lock == SessionLock::held)
                return conclude(noted);
            return concludeNothing();
        }
        if (isNewer) return conclude(noted);
        // An activity is heard of when a tool has ended, which may be after the whole turn. All
        // other events come before what they bring about is noted.
        const bool mayBeLate = noted.isPresent && lastCategory(session_) == EventCategory::activity;
        if (!mayBeLate && !isAbout(noted)) return concludeNothing();
        const auto settled = session_.lastAppliedAt + timeToNote;
        if (now_ >= settled) return conclude(noted);
        judgement_.next = settled;
    }

    bool saysTheSame(AgentState state) const {
        return (state == AgentState::waiting && session_.status == SessionStatus::needsAttention) ||
               (state == AgentState::working && session_.status == SessionStatus::working);
    }

    const SessionSnapshot& session_;
    SessionNotes notes_;
    const std::optional<AgentPresence>& known_;
    Instant now_;
    Judgement judgement_;
};

// The agent's process on the session's own terminal, where there is just one.
std::optional<ProcessIdentity> agentOnTerminal(const SessionSnapshot& session) {
    const auto terminal = session.tty ? TerminalDevice::parse(*session.tty) : std::nullopt;
    const auto device = terminal ? ProcessTable::deviceNumber(*terminal) : std::nullopt;
    if (!device) return std::nullopt;
    auto processes = ProcessTable::processesOnDevice(*device);
    const auto program = AgentProfile::of(session.key.provider).locations.executableName;
    std::erase_if(processes, [&](const ProcessRecord& process) { return process.name != program; });
    if (processes.size() != 1) return std::nullopt;
    const auto start = processStart(processes.front().pid);
    if (!start) return std::nullopt;
    return ProcessIdentity{processes.front().pid, *start};
}

std::vector<SessionSnapshot> sessionsToLookAt(Database& database, Instant now) {
    SessionStore store{database};
    const auto since = now - std::chrono::duration_cast<Instant::duration>(listedFor);
    auto sessions = store.sessionsThatWait(since);
    std::ranges::move(store.sessionsAtWork(since), std::back_inserter(sessions));
    std::erase_if(sessions, [](const auto& session) { return !isAtWork(session); });
    for (auto& session : store.completedSessions(now - timeToLearnOfAnEnd))
        if (hasEndedInATurn(session)) sessions.push_back(std::move(session));
    std::erase_if(sessions, [](const auto& session) { return session.key.isSetupCheck(); });
    return sessions;
}

// With every event a session is judged anew. Where that finds what is known, and what the events
// say as well, storing it would be a write to the disk for nothing.
bool isWorthStoring(const SessionSnapshot& session, const std::optional<AgentPresence>& known,
                    const AgentPresence& presence) {
    auto before = known.value_or(AgentPresence{});
    if (before == presence) return false;
    before.judgedAt = presence.judgedAt;
    return before != presence || shownAs(session, presence) != session;
}

}  // namespace

bool waits(const SessionSnapshot& session) {
    return session.status == SessionStatus::needsAttention && !session.sessionEnded;
}

Judgement judge(const SessionSnapshot& session, const std::optional<SessionNotes>& notes,
                const std::optional<AgentPresence>& known, Instant now) {
    return Judge{session, notes, known, now}.judge();
}

std::vector<Presence::Look> Presence::look(Database& database, Instant now) const {
    std::vector<Look> looks;
    PresenceStore store{database};
    auto sessions = sessionsToLookAt(database, now);
    for (const auto& agent : agents_) {
        std::vector<std::string> ids;
        for (const auto& session : sessions)
            if (session.key.provider == agent.provider) ids.push_back(session.key.sessionID);
        if (ids.empty()) continue;
        auto noted = agent.read(ids);
        for (auto& session : sessions) {
            if (session.key.provider != agent.provider) continue;
            std::optional<SessionNotes> notes;
            if (const auto found = noted.find(session.key.sessionID); found != noted.end())
                notes = found->second;
            const auto known = store.presence(session.key);
            if (agent.ownsTerminal && !notes && (!known || !known->process))
                if (const auto process = agentOnTerminal(session))
                    notes = SessionNotes{.process = process,
                                         .processLives = true,
                                         .state = std::nullopt,
                                         .lock = SessionLock::unknown};
            auto judgement = judge(session, notes, known, now);
            looks.push_back({std::move(session), known, judgement});
        }
    }
    return looks;
}

void Presence::store(Database& database, const std::vector<const Look*>& changed,
                     const PresenceNews& news) {
    // Most looks find what is known, and then nothing is written.
    if (changed.empty()) return;
    auto transaction = database.beginWriting();
    for (const auto* looked : changed) {
        PresenceStore{database}.set(looked->session.key, looked->judgement.presence);
        news(looked->session, looked->judgement.presence);
    }
    transaction.commit();
}

PresenceOutlook Presence::follow(Database& database, Instant now, const PresenceNews& news) const {
    PresenceOutlook outlook;
    const auto looks = look(database, now);
    std::vector<const Look*> changed;
    for (const auto& looked : looks) {
        const auto& [session, known, judgement] = looked;
        const auto& presence = judgement.presence;
        if (isWorthStoring(session, known, presence)) changed.push_back(&looked);
        if (judgement.next && (!outlook.next || *judgement.next < *outlook.next))
            outlook.next = judgement.next;
        if (presence.process && isAlive(*presence.process))
            outlook.processes.push_back(*presence.process);
    }
    store(database, changed, news);
    for (const auto& agent : agents_)
        if (std::ranges::any_of(looks, [&](const Look& looked) {
                return looked.session.key.provider == agent.provider;
            }))
            std::ranges::copy(agent.places, std::back_inserter(outlook.places));
    return outlook;
}

AgentPresences Presence::asOfNow(Database& database, Instant seenSince, Instant now) const {
    auto presences = PresenceStore{database}.ofSessionsSeenSince(seenSince);
    for (const auto& looked : look(database, now))
        presences.insert_or_assign(looked.session.id(), looked.judgement.presence);
    return presences;
}

bool Presence::hasWaitedSince(const SessionKey& key, Instant since) const {
    for (const auto& agent : agents_) {
        if (agent.provider != key.provider) continue;
        const auto notes = agent.read({key.sessionID});
        const auto found = notes.find(key.sessionID);
        if (found == notes.end() || !found->second.state) continue;
        const auto& state = *found->second.state;
        if (state.isPresent && state.state == AgentState::waiting && state.since <= since)
            return true;
    }
    return false;
}

std::vector<SessionSnapshot> sessionsShownWaiting(Database& database, Instant seenSince) {
    SessionStore store{database};
    PresenceStore presences{database};
    auto sessions = store.sessionsThatWait(seenSince);
    std::set<std::string> others = presences.waiting();
    for (const auto& session : sessions) others.erase(session.id());
    for (auto& session : store.sessions(others))
        if (session.lastSeenAt >= seenSince) sessions.push_back(std::move(session));
    std::vector<SessionSnapshot> waiting;
    for (auto& session : sessions) {
        const auto presence = presences.presence(session.key);
        if (auto shown = shownAs(std::move(session), presence); waits(shown))
            waiting.push_back(std::move(shown));
    }
    return waiting;
}

}  // namespace tallowbrook::host
