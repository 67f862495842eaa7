// Until when something is to hold, in the user's words: "30m", "for 1h30m", "until 14:00".
#pragma once

#include <chrono>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "Domain/Instant.h"
#include "Notifications/Calendar.h"
#include "Output/Sentence.h"

namespace tallowbrook::host {

// Both words are optional; without any there is no end. A time of day is the next one by the
// user's clock; a span is whole days, hours and minutes, a year at most.
[[nodiscard]] std::expected<std::optional<Instant>, Sentence> endOf(
    const std::optional<std::string>& first, const std::optional<std::string>& second, Instant now,
    const Calendar& calendar);

// "until 14:00", or "until you say otherwise".
std::string untilWords(std::optional<Instant> end, Instant now);

}  // namespace tallowbrook::host
