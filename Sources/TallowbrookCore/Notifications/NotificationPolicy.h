// Decides whether an event is worth a notification to the user, and words it.
//
// Pure: the host delivers the notification and remembers when it did. Safe from any thread.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "Domain/AgentEvent.h"
#include "Notifications/NotificationPreferences.h"
#include "SessionState/SessionReducer.h"

namespace tallowbrook {

enum class NotificationKind { attention, failure, completion, reminder };
inline constexpr std::array notificationKindNames{
    std::pair{NotificationKind::attention, std::string_view{"attention"}},
    std::pair{NotificationKind::failure, std::string_view{"failure"}},
    std::pair{NotificationKind::completion, std::string_view{"completion"}},
    std::pair{NotificationKind::reminder, std::string_view{"reminder"}},
};
constexpr const auto& namesOf(NotificationKind) { return notificationKindNames; }

// Why a notification is held back. Of several reasons the first in this order counts.
enum class NotificationSuppression {
    disabled,
    paused,
    kindDisabled,
    staleBacklog,
    quietHours,
    duplicate,
};
inline constexpr std::array notificationSuppressionNames{
    std::pair{NotificationSuppression::disabled, std::string_view{"disabled"}},
    std::pair{NotificationSuppression::paused, std::string_view{"paused"}},
    std::pair{NotificationSuppression::kindDisabled, std::string_view{"kindDisabled"}},
    std::pair{NotificationSuppression::staleBacklog, std::string_view{"staleBacklog"}},
    std::pair{NotificationSuppression::quietHours, std::string_view{"quietHours"}},
    std::pair{NotificationSuppression::duplicate, std::string_view{"duplicate"}},
};
constexpr const auto& namesOf(NotificationSuppression) { return notificationSuppressionNames; }

struct NotificationContent {
    NotificationKind kind = NotificationKind::attention;
    std::string title;
    std::string body;
    std::string sessionStorageID;
    UUID eventID{};         // of the event that caused it
    std::string dedupeKey;  // "claudeCode|S1|attention", shared by all of one kind and session
    bool playSound = false;
    bool operator==(const NotificationContent&) const = default;
};

struct NotificationDecision {
    struct Suppressed {
        NotificationSuppression reason = NotificationSuppression::disabled;
        NotificationContent content;  // what would have been delivered
        bool operator==(const Suppressed&) const = default;
    };
    struct Deliver {
        NotificationContent content;
        bool operator==(const Deliver&) const = default;
    };
    struct NotApplicable {
        bool operator==(const NotApplicable&) const = default;
    };
    std::variant<Suppressed, Deliver, NotApplicable> outcome;
    bool operator==(const NotificationDecision&) const = default;

    static NotificationDecision suppressed(NotificationSuppression reason,
                                           NotificationContent content) {
        return {Suppressed{reason, std::move(content)}};
    }
    static NotificationDecision deliver(NotificationContent content) {
        return {Deliver{std::move(content)}};
    }
    static NotificationDecision notApplicable() { return {NotApplicable{}}; }
};

namespace NotificationPolicy {

// When a notification with this key was last delivered; absent when none ever was.
using LastDelivered = std::function<std::optional<Instant>(const std::string& dedupeKey)>;

// `result` is what the reducer made of `event`. The session's own texts are taken from its current
// snapshot. `lastDelivered` is asked only when nothing else holds the notification back.
NotificationDecision decide(const AgentEvent& event, const ReductionResult& result,
                            const NotificationPreferences& preferences, Instant now,
                            const Calendar& calendar, const LastDelivered& lastDelivered);

NotificationContent makeContent(NotificationKind kind, const SessionSnapshot& session,
                                const AgentEvent& event, bool playSound);

}  // namespace NotificationPolicy
}  // namespace tallowbrook
