// Folds one event into the snapshot of its session and says what the event did.
//
// Pure: every time comes from the events. A value may be used from any thread.
#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "Domain/AgentEvent.h"
#include "SessionState/SessionSnapshot.h"

namespace tallowbrook {

enum class EventEffect {
    applied,     // the session is new, or its status, attention or ended flag changed
    confirmed,   // the event says what was known already
    ignored,     // it has no meaning for the status of this session
    duplicate,   // a copy of an event that was seen before
    outOfOrder,  // it is older than the last applied event
    noSession,   // it names no session
};
inline constexpr std::array eventEffectNames{
    std::pair{EventEffect::applied, std::string_view{"applied"}},
    std::pair{EventEffect::confirmed, std::string_view{"confirmed"}},
    std::pair{EventEffect::ignored, std::string_view{"ignored"}},
    std::pair{EventEffect::duplicate, std::string_view{"duplicate"}},
    std::pair{EventEffect::outOfOrder, std::string_view{"outOfOrder"}},
    std::pair{EventEffect::noSession, std::string_view{"noSession"}},
};
constexpr const auto& namesOf(EventEffect) { return eventEffectNames; }

struct ReductionResult {
    EventEffect effect = EventEffect::noSession;
    std::optional<SessionSnapshot> previous;  // absent for a new session
    std::optional<SessionSnapshot> current;   // what the host is to store; absent: nothing
    bool operator==(const ReductionResult&) const = default;

    // Whether status or attention differ; true for a new session.
    bool statusChanged() const;
};

struct SessionReducer {
    // An event that comes again at most this far from its first copy, in either direction, is a
    // duplicate.
    Seconds duplicateWindow;
    bool operator==(const SessionReducer&) const = default;

    // `stored` is the snapshot of the event's session, absent for a session not seen before. It is
    // taken over and comes back as `previous`: copying it would be a third of all work. Ends the
    // program when a counter of the snapshot is full.
    ReductionResult reduce(std::optional<SessionSnapshot>&& stored, const AgentEvent& event) const;
};

}  // namespace tallowbrook
