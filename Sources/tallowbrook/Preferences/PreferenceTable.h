// The one table of everything that the user can choose: how it is called, shown and changed.
//
// Pure functions; safe from any thread.
#pragma once

#include <expected>
#include <span>
#include <string>
#include <string_view>

#include "Output/Sentence.h"
#include "Preferences/HostPreferences.h"

namespace tallowbrook::host {

struct PreferenceRow {
    std::string_view name;
    std::string_view meaning;
    std::string (*show)(const Preferences& from);  // as `change` takes it
    // False when the value does not fit; nothing is changed then.
    bool (*change)(Preferences& to, std::string_view value);
};

// In the order in which they are shown.
std::span<const PreferenceRow> preferenceRows();

// The preferences with a new value: "on" or "off" for a switch; "off", "on" or "22:00-07:00" for
// quiet hours; a number of seconds from 0 to 31536000 for an interval; "off" or one of
// `ReminderPolicy::intervalChoices` for reminders; "auto" or names of channels for these. The error
// says that there is no such preference, that the value does not fit, or that it would mute
// everything without looking like it.
[[nodiscard]] std::expected<Preferences, Sentence> setPreference(Preferences preferences,
                                                                 std::string_view name,
                                                                 std::string_view value);

}  // namespace tallowbrook::host
