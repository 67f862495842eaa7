// What the user's choices keep from the user: a value that mutes says so when it is chosen, and
// when a host begins.
//
// Pure; safe from any thread.
#pragma once

#include <optional>
#include <vector>

#include "Notifications/Calendar.h"
#include "Output/Sentence.h"
#include "Preferences/HostPreferences.h"

namespace tallowbrook::host {

struct Muting {
    std::optional<Sentence> everything;  // nothing at all is told, for as long as this is chosen
    std::optional<Sentence> quietHours;  // nothing is told in them
    bool areQuietNow = false;
    std::optional<Sentence> some;  // what is never told

    static Muting of(const Preferences& preferences, Instant now, const Calendar& calendar);

    // All that there is to say of the choices; where nothing is told, that alone.
    std::vector<Sentence> sentences() const;

    // The same as far as it is of use to someone who wants to be told now.
    std::vector<Sentence> sentencesNow() const;
};

// An event never reaches a host at once: with this age as the greatest, or a smaller one, nothing
// would ever be told.
inline constexpr Seconds ageOfEveryEvent{0};

}  // namespace tallowbrook::host
