// What the user wants to be notified of, and when not: one record that the host keeps as JSON.
//
// Plain values and pure functions; safe from any thread. No defaults are settled here: the host
// chooses them.
#pragma once

#include <cstdint>
#include <expected>
#include <string>
#include <string_view>

#include "Domain/Instant.h"
#include "Domain/RecordCoding.h"
#include "Notifications/Calendar.h"

namespace tallowbrook {

// A daily window without notifications, in minutes after local midnight.
struct QuietHours {
    bool enabled = false;
    std::int64_t startMinute = 0;
    std::int64_t endMinute = 0;  // the first minute behind the window
    bool operator==(const QuietHours&) const = default;

    QuietHours() = default;
    // Brings both minutes into 0 to 1439: -60 becomes 1380, 1500 becomes 60.
    QuietHours(bool isEnabled, std::int64_t start, std::int64_t end);

    // A window whose end lies before its start crosses midnight; one whose start is its end is
    // empty.
    bool contains(Instant date, const Calendar& calendar) const;
};

struct NotificationPreferences {
    bool enabled = false;
    bool paused = false;  // for a while, by the user
    bool notifyOnAttention = false;
    bool notifyOnCompletion = false;
    bool notifyOnFailure = false;
    QuietHours quietHours{};
    Seconds dedupeInterval{};  // two notifications with one key within it are one
    Seconds maxEventAge{};     // an older event never notifies
    bool playSound = false;
    bool operator==(const NotificationPreferences&) const = default;
};

namespace NotificationPreferencesCoding {

// One line of compact JSON without a line feed, members named after the fields. Both intervals
// must be finite.
std::string encode(const NotificationPreferences& preferences);

// Every field must be there with the right type. The minutes of the quiet hours stay as found,
// even outside 0 to 1439. Unknown members are passed over.
std::expected<NotificationPreferences, DecodingError> decode(std::string_view text);

}  // namespace NotificationPreferencesCoding
}  // namespace tallowbrook
