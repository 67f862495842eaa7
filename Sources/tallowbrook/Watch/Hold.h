// When the user wants to hear nothing for a while, and until when.
//
// Pure functions; safe from any thread.
#pragma once

#include <optional>

#include "Notifications/Calendar.h"
#include "Preferences/HostPreferences.h"

namespace tallowbrook::host {

struct Hold {
    std::optional<Instant> until;  // absent: until the user says so
    bool operator==(const Hold&) const = default;
};

// The pause or the quiet hours that hold back what is to be told at `now`; absent when nothing
// does. What they hold back is told in one line when they end.
std::optional<Hold> holdAt(Instant now, const Preferences& preferences, const Calendar& calendar);

// When quiet hours that are in force are over, by the clock on the wall; where that clock is
// changed meanwhile the next look comes to another answer.
Instant endOf(const QuietHours& hours, Instant now, const Calendar& calendar);

}  // namespace tallowbrook::host
