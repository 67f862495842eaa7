// What the user was not told of, and why.
//
// Plain values; safe from any thread.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Domain/EnumNames.h"
#include "Domain/Instant.h"
#include "Domain/UUID.h"
#include "Notifications/NotificationPolicy.h"

namespace tallowbrook::host {

enum class UntoldReason {
    // The policy's:
    disabled,
    paused,
    kindDisabled,
    staleBacklog,
    quietHours,
    duplicate,
    // The host's own:
    shortTurn,  // it finished so soon that its user still looks at it
    folded,     // the session had moved on before it could be told
    lookedAt,   // the user was there
    muted,
};
inline constexpr std::array untoldReasonNames{
    std::pair{UntoldReason::disabled, std::string_view{"disabled"}},
    std::pair{UntoldReason::paused, std::string_view{"paused"}},
    std::pair{UntoldReason::kindDisabled, std::string_view{"kindDisabled"}},
    std::pair{UntoldReason::staleBacklog, std::string_view{"staleBacklog"}},
    std::pair{UntoldReason::quietHours, std::string_view{"quietHours"}},
    std::pair{UntoldReason::duplicate, std::string_view{"duplicate"}},
    std::pair{UntoldReason::shortTurn, std::string_view{"shortTurn"}},
    std::pair{UntoldReason::folded, std::string_view{"folded"}},
    std::pair{UntoldReason::lookedAt, std::string_view{"lookedAt"}},
    std::pair{UntoldReason::muted, std::string_view{"muted"}},
};
constexpr const auto& namesOf(UntoldReason) { return untoldReasonNames; }

UntoldReason untoldReason(NotificationSuppression suppression);

struct Untold {
    UUID eventID{};
    std::string session;  // by storage id
    UntoldReason reason = UntoldReason::disabled;
    Instant at{};                 // of the decision
    std::optional<Seconds> turn;  // how long it took, of a short one
    bool operator==(const Untold&) const = default;

    // Behind "not told: ", without a full stop: "the turn took 3 s".
    std::string words() const;
};

}  // namespace tallowbrook::host
