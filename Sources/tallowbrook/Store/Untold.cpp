#include "Store/Untold.h"

#include <fmt/core.h>

#include <cmath>

namespace tallowbrook::host {

UntoldReason untoldReason(NotificationSuppression suppression) {
    switch (suppression) {
        case NotificationSuppression::paused:
            return UntoldReason::paused;
        case NotificationSuppression::kindDisabled:
            return UntoldReason::kindDisabled;
        case NotificationSuppression::staleBacklog:
            return UntoldReason::staleBacklog;
        case NotificationSuppression::quietHours:
            return UntoldReason::quietHours;
        case NotificationSuppression::duplicate:
            return UntoldReason::duplicate;
        case NotificationSuppression::disabled:
            break;
    }
    return UntoldReason::disabled;
}

std::string Untold::words() const {
    switch (reason) {
        case UntoldReason::disabled:
            return "notifications are switched off";
        case UntoldReason::paused:
            return "notifications were paused";
        case UntoldReason::kindDisabled:
            return "notifications of this kind are switched off";
        case UntoldReason::staleBacklog:
            return "it was too old when it was read";
        case UntoldReason::quietHours:
            return "it came in quiet hours";
        case UntoldReason::duplicate:
            return "the same had been told just before";
        case UntoldReason::shortTurn:
            // Cut, not rounded: a turn must not look as long as one that is told.
            return turn ? fmt::format("the turn took {} s", std::floor(turn->count()))
                        : "the turn was short";
        case UntoldReason::lookedAt:
            return "you were there";
        case UntoldReason::muted:
            return "it was muted";
        case UntoldReason::folded:
            break;
    }
    return "it was over before it could be told";
}

}  // namespace tallowbrook::host
