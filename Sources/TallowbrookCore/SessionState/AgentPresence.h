// What is known of the agent behind a session beside its events: whether it is there, and what it
// is at. An agent that the user interrupts or that is killed often sends no event at all.
//
// Plain values and pure functions; safe from any thread.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Domain/Instant.h"
#include "SessionState/SessionSnapshot.h"

namespace tallowbrook {

enum class AgentState {
    unknown,      // nothing is known that the session's events do not say
    working,      // at a turn
    waiting,      // for the user, in the middle of a turn
    idle,         // at no turn; how the last one ended is not known
    finished,     // the last turn was completed
    failed,       // the last turn failed
    interrupted,  // the last turn was interrupted
    gone,         // the agent has ended
};
inline constexpr std::array agentStateNames{
    std::pair{AgentState::unknown, std::string_view{"unknown"}},
    std::pair{AgentState::working, std::string_view{"working"}},
    std::pair{AgentState::waiting, std::string_view{"waiting"}},
    std::pair{AgentState::idle, std::string_view{"idle"}},
    std::pair{AgentState::finished, std::string_view{"finished"}},
    std::pair{AgentState::failed, std::string_view{"failed"}},
    std::pair{AgentState::interrupted, std::string_view{"interrupted"}},
    std::pair{AgentState::gone, std::string_view{"gone"}},
};
constexpr const auto& namesOf(AgentState) { return agentStateNames; }

// What the knowledge comes from.
enum class AgentEvidence {
    none,
    record,   // the agent's own record of its process
    turns,    // the agent's own record of its turns
    lock,     // the lock that a process of the agent keeps on the session
    process,  // the process table
};
inline constexpr std::array agentEvidenceNames{
    std::pair{AgentEvidence::none, std::string_view{"none"}},
    std::pair{AgentEvidence::record, std::string_view{"record"}},
    std::pair{AgentEvidence::turns, std::string_view{"turns"}},
    std::pair{AgentEvidence::lock, std::string_view{"lock"}},
    std::pair{AgentEvidence::process, std::string_view{"process"}},
};
constexpr const auto& namesOf(AgentEvidence) { return agentEvidenceNames; }

// One process for good: its id alone is given to another one after its end.
struct ProcessIdentity {
    std::int32_t pid = 0;
    std::int64_t start = 0;  // in the unit of its system
    bool operator==(const ProcessIdentity&) const = default;
};

struct AgentPresence {
    AgentState state = AgentState::unknown;
    AgentEvidence evidence = AgentEvidence::none;
    Instant since{};
    // `lastAppliedAt` of the session as it was judged: of a session that has had an event since,
    // this says nothing any more.
    Instant judgedAt = distantPast;
    std::optional<ProcessIdentity> process;  // the agent's, as it was last seen
    bool lockWasHeld = false;
    bool operator==(const AgentPresence&) const = default;

    // Whether it says something about the session as it stands.
    bool holdsFor(const SessionSnapshot& session) const;
};

// By the storage ids of their sessions.
using AgentPresences = std::map<std::string, AgentPresence>;

// The session as it is to be shown: its status, its end and their times as the agent's presence
// says, all else as stored. The session itself where the presence is absent or does not hold.
SessionSnapshot shownAs(SessionSnapshot session, const std::optional<AgentPresence>& presence);

// Why a session is shown so: "Claude Code's own record says idle since 14:05.". `formatTime` must
// hold a function. Empty where the presence says nothing.
std::string presenceText(Provider provider, const AgentPresence& presence,
                         const std::function<std::string(Instant)>& formatTime);

}  // namespace tallowbrook
