#include "SessionState/SessionReducer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <utility>

namespace tallowbrook {

bool ReductionResult::statusChanged() const {
    if (!current) return false;
    if (!previous) return true;
    return previous->status != current->status || previous->attention != current->attention;
}

namespace {

std::string_view orEmpty(const std::optional<std::string>& text) {
    return text ? std::string_view{*text} : std::string_view{};
}

// What two copies of one event have in common, whatever their ids and times.
std::string signature(const AgentEvent& event) {
    const std::array parts{
        rawValue(event.channel),
        std::string_view{event.eventType},
        rawValue(event.category),
        event.attention ? rawValue(*event.attention) : std::string_view{},
        orEmpty(event.turnID),
        orEmpty(event.detail.notificationType),
        orEmpty(event.detail.toolName),
        orEmpty(event.detail.sessionSource),
        orEmpty(event.detail.endReason),
        orEmpty(event.detail.errorType),
    };
    // Laid out in one piece, since a session's every event comes by here.
    std::size_t size = parts.size();
    for (const auto part : parts) size += part.size();
    std::string text(size - 1, '|');
    char* end = text.data();
    for (const auto part : parts) end = std::ranges::copy(part, end).out + 1;
    return text;
}

bool isDuplicate(const SessionSnapshot& stored, const AgentEvent& event,
                 const std::string& eventSignature, Seconds window) {
    if (stored.lastSignature == eventSignature && stored.lastSignatureAt &&
        Seconds{std::chrono::abs(*stored.lastSignatureAt - event.observedAt)} <= window)
        return true;
    // An agent may announce one completion by its hook and by its notify program, far apart.
    return event.category == EventCategory::turnCompleted && event.turnID &&
           event.turnID == stored.lastCompletedTurnID;
}

void countUp(std::int64_t& counter, const char* name) {
    if (counter == std::numeric_limits<std::int64_t>::max()) {
        // Counted on, it would overflow and lie; only a broken store can bring it here.
        std::fprintf(stderr, "tallowbrook: the %s of a session is full\n", name);
        std::abort();
    }
    ++counter;
}

// Counts and stamps an event, whatever else it does.
void touch(SessionSnapshot& snapshot, const AgentEvent& event) {
    countUp(snapshot.eventCount, "eventCount");
    // Before `lastSeenAt` moves: a late event must not bring an old terminal back.
    if (event.tty && event.observedAt >= snapshot.lastSeenAt) snapshot.tty = event.tty;
    snapshot.lastSeenAt = std::max(snapshot.lastSeenAt, event.observedAt);
    // One live event makes the session real, whatever tests went before.
    if (event.origin == EventOrigin::live) snapshot.origin = EventOrigin::live;
}

// A status that is there already keeps the time and the event that first set it.
void ensureStatus(SessionSnapshot& snapshot, const AgentEvent& event, SessionStatus status,
                  std::optional<AttentionKind> attention = std::nullopt) {
    if (snapshot.status == status && snapshot.attention == attention) return;
    snapshot.status = status;
    snapshot.attention = attention;
    snapshot.statusEventType = event.eventType;
    snapshot.statusCategory = event.category;
    snapshot.statusDetail = event.detail;
    snapshot.statusSince = event.observedAt;
}

// An agent announces a start also when it compacts a session that is running; and a new session is
// `unknown` already. So only an ended one changes.
void startSession(SessionSnapshot& snapshot, const AgentEvent& event) {
    if (!snapshot.sessionEnded) return;
    snapshot.sessionEnded = false;
    snapshot.endedAt.reset();
    snapshot.endReason.reset();
    ensureStatus(snapshot, event, SessionStatus::unknown);
}

void submitPrompt(SessionSnapshot& snapshot, const AgentEvent& event) {
    countUp(snapshot.promptCount, "promptCount");
    snapshot.sessionEnded = false;
    ensureStatus(snapshot, event, SessionStatus::working);
}

// A session that has ended waits for nothing: the request came late.
bool requestAttention(SessionSnapshot& snapshot, const AgentEvent& event) {
    if (snapshot.sessionEnded) return false;
    ensureStatus(snapshot, event, SessionStatus::needsAttention,
                 event.attention.value_or(AttentionKind::input));
    return true;
}

bool noteActivity(SessionSnapshot& snapshot, const AgentEvent& event) {
    if (snapshot.sessionEnded) return false;
    switch (snapshot.status) {
        // A tool's late report says nothing about a turn that is over.
        case SessionStatus::completed:
        case SessionStatus::failed:
        case SessionStatus::interrupted:
            return false;
        case SessionStatus::working:
        case SessionStatus::stale:
            return true;
        case SessionStatus::needsAttention:
        case SessionStatus::unknown:
            break;
    }
    ensureStatus(snapshot, event, SessionStatus::working);
    return true;
}

void completeTurn(SessionSnapshot& snapshot, const AgentEvent& event) {
    if (event.turnID) snapshot.lastCompletedTurnID = event.turnID;
    ensureStatus(snapshot, event, SessionStatus::completed);
}

void endSession(SessionSnapshot& snapshot, const AgentEvent& event) {
    snapshot.sessionEnded = true;
    snapshot.endedAt = event.observedAt;
    snapshot.endReason = event.detail.endReason;
    // How the last turn went wrong is worth more to the user than that the session is over.
    if (snapshot.status == SessionStatus::failed || snapshot.status == SessionStatus::interrupted)
        return;
    ensureStatus(snapshot, event, SessionStatus::completed);
}

// The status machine. False when the event has no meaning for the session as it stands.
bool apply(const AgentEvent& event, SessionSnapshot& snapshot) {
    switch (event.category) {
        case EventCategory::sessionStarted:
            startSession(snapshot, event);
            return true;
        case EventCategory::promptSubmitted:
            submitPrompt(snapshot, event);
            return true;
        case EventCategory::attentionRequested:
            return requestAttention(snapshot, event);
        case EventCategory::activity:
            return noteActivity(snapshot, event);
        case EventCategory::turnCompleted:
            completeTurn(snapshot, event);
            return true;
        case EventCategory::turnFailed:
            ensureStatus(snapshot, event, SessionStatus::failed);
            return true;
        case EventCategory::turnInterrupted:
            ensureStatus(snapshot, event, SessionStatus::interrupted);
            return true;
        case EventCategory::sessionEnded:
            endSession(snapshot, event);
            return true;
        case EventCategory::informational:
        case EventCategory::unrecognized:
            break;
    }
    return false;
}

// What an event that is no duplicate does to the snapshot, once it is counted and signed.
EventEffect fold(const AgentEvent& event, const std::optional<SessionSnapshot>& previous,
                 SessionSnapshot& current) {
    if (event.category == EventCategory::informational ||
        event.category == EventCategory::unrecognized)
        return EventEffect::ignored;
    if (previous && event.observedAt < previous->lastAppliedAt) return EventEffect::outOfOrder;

    current.lastEventType = event.eventType;
    if (event.cwd) current.cwd = event.cwd;
    if (!apply(event, current)) return EventEffect::ignored;
    current.lastAppliedAt = event.observedAt;

    const bool same = previous && previous->status == current.status &&
                      previous->attention == current.attention &&
                      previous->sessionEnded == current.sessionEnded;
    return same ? EventEffect::confirmed : EventEffect::applied;
}

}  // namespace

ReductionResult SessionReducer::reduce(std::optional<SessionSnapshot>&& stored,
                                       const AgentEvent& event) const {
    ReductionResult result{EventEffect::noSession, std::move(stored), std::nullopt};
    const std::optional<SessionSnapshot>& previous = result.previous;
    if (!event.sessionID) {
        result.current = previous;
        return result;
    }

    std::string eventSignature = signature(event);
    if (previous && isDuplicate(*previous, event, eventSignature, duplicateWindow)) {
        result.effect = EventEffect::duplicate;
        result.current = previous;
        touch(*result.current, event);
        return result;
    }

    if (previous) {
        // The copy gets a signature of its own. To go without the old one, the longest text of a
        // snapshot, makes the whole call faster by a twelfth.
        auto oldSignature = std::exchange(result.previous->lastSignature, std::nullopt);
        result.current = previous;
        result.previous->lastSignature = std::move(oldSignature);
    } else {
        result.current = SessionSnapshot::initial({event.provider, *event.sessionID}, event);
    }
    SessionSnapshot& current = *result.current;
    touch(current, event);
    current.lastSignature = std::move(eventSignature);
    current.lastSignatureAt = event.observedAt;
    result.effect = fold(event, previous, current);
    return result;
}

}  // namespace tallowbrook
