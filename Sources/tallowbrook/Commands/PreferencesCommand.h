// `tallowbrook preferences`: shows and changes what the user wants to be told.
#pragma once

#include <chrono>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "EventBridge/TallowbrookPaths.h"
#include "Notifications/NotificationPreferences.h"

namespace tallowbrook::host {

// A line for each preference: its name, its value as `setPreference` takes it, its meaning.
std::string preferencesTable(const NotificationPreferences& preferences);

// Values: "on" or "off"; for quietHours "off", "on" or "22:00-07:00"; for intervals a number of
// seconds from 0 to 31536000. The error is a whole sentence for the user.
[[nodiscard]] std::expected<NotificationPreferences, std::string> setPreference(
    NotificationPreferences preferences, std::string_view name, std::string_view value);

// The one preference that concerns the host alone: minutes from one reminder to the next, zero for
// none.
inline constexpr std::string_view reminderIntervalName = "reminderInterval";

// Values: "off" or one of `ReminderPolicy::intervalChoices`. The error is a whole sentence.
[[nodiscard]] std::expected<std::chrono::minutes, std::string> parseReminderInterval(
    std::string_view value);

std::string reminderIntervalRow(std::chrono::minutes interval);

struct PreferenceChange {
    std::string name;
    std::string value;
};

// Shows the preferences, or makes the change first. Gives the exit status: 0, 1 when the database
// cannot be used, 2 for an unknown name or a value that does not fit; nothing is changed then.
int preferences(const TallowbrookPaths& paths, const std::optional<PreferenceChange>& change);

}  // namespace tallowbrook::host
