// A time of day as the user types it.
//
// Pure; safe from any thread.
#pragma once

#include <optional>
#include <string_view>

namespace tallowbrook::host {

// Minutes after midnight of "22:00". Both digits of the hour are asked for, so that what is shown
// and what is typed look alike. Absent for anything else.
std::optional<int> parseTimeOfDay(std::string_view text);

}  // namespace tallowbrook::host
