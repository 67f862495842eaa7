// What the host knows about one agent session: one record, keyed by agent and session id.
//
// Plain values and pure functions; safe from any thread. The caller brings the clock.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Domain/AgentEvent.h"
#include "Domain/Instant.h"

namespace tallowbrook {

struct SessionKey {
    Provider provider = Provider::claudeCode;
    std::string sessionID;
    bool operator==(const SessionKey&) const = default;

    // "codexCLI|abc"
    std::string storageID() const;

    // Whether the session is the setup's own, begun to see whether events arrive. It belongs in no
    // list or count and is removed after the check.
    bool isSetupCheck() const;
};

// How the ids of the setup's own sessions begin.
inline constexpr std::string_view setupCheckPrefix = "tallowbrook-setup-check-";

// `stale` is how a session is shown that has been working in silence for too long; it is never
// stored.
enum class SessionStatus {
    working,
    needsAttention,
    completed,
    failed,
    interrupted,
    stale,
    unknown,
};
inline constexpr std::array sessionStatusNames{
    std::pair{SessionStatus::working, std::string_view{"working"}},
    std::pair{SessionStatus::needsAttention, std::string_view{"needsAttention"}},
    std::pair{SessionStatus::completed, std::string_view{"completed"}},
    std::pair{SessionStatus::failed, std::string_view{"failed"}},
    std::pair{SessionStatus::interrupted, std::string_view{"interrupted"}},
    std::pair{SessionStatus::stale, std::string_view{"stale"}},
    std::pair{SessionStatus::unknown, std::string_view{"unknown"}},
};
constexpr const auto& namesOf(SessionStatus) { return sessionStatusNames; }

// The place in a list of sessions, from 0 (what waits for the user) to 6.
int sortRank(SessionStatus status);

struct SessionSnapshot {
    SessionKey key;
    EventOrigin origin = EventOrigin::live;  // of the first event; `live` once any was live
    SessionStatus status = SessionStatus::unknown;
    std::optional<AttentionKind> attention;  // only while `needsAttention`
    // Of the event that set the status:
    std::string statusEventType;
    EventCategory statusCategory = EventCategory::unrecognized;
    EventDetail statusDetail;
    Instant statusSince{};
    Instant firstSeenAt{};
    Instant lastSeenAt{};  // never moves back
    Instant lastAppliedAt = distantPast;
    std::string lastEventType;  // of the last event that reached the status machine
    std::optional<std::string> cwd;
    std::optional<std::string> tty;
    bool sessionEnded = false;
    std::optional<Instant> endedAt;
    std::optional<std::string> endReason;
    std::int64_t promptCount = 0;
    std::optional<std::string> lastCompletedTurnID;
    std::optional<std::string> lastSignature;  // tells the same event delivered twice
    std::optional<Instant> lastSignatureAt;
    std::int64_t eventCount = 0;
    bool operator==(const SessionSnapshot&) const = default;

    // A session as it stands before its first event is counted and applied.
    static SessionSnapshot initial(SessionKey key, const AgentEvent& firstEvent);

    std::string id() const { return key.storageID(); }

    // The working directory's own name, or "Project unavailable".
    std::string projectLabel() const;

    // `stale` for a working session not heard of for more than `staleAfter`, else the stored one.
    SessionStatus displayStatus(Instant now, Seconds staleAfter) const;

    // One paragraph for the user on why the session has this status. `formatTime` must hold a
    // function.
    std::string explanation(Instant now, Seconds staleAfter,
                            const std::function<std::string(Instant)>& formatTime) const;
};

}  // namespace tallowbrook

template <>
struct std::hash<tallowbrook::SessionKey> {
    std::size_t operator()(const tallowbrook::SessionKey& key) const noexcept;
};
