#include "Preferences/TimeOfDay.h"

#include "Text/Digits.h"

namespace tallowbrook::host {

std::optional<int> parseTimeOfDay(std::string_view text) {
    // What stands for the colon is looked at, so that no other mark passes for one.
    if (text.size() != 5 || text[2] != ':') return std::nullopt;
    const auto hour = parseNumber<unsigned>(text.substr(0, 2));
    const auto minute = parseNumber<unsigned>(text.substr(3));
    if (!hour || !minute || *hour > 23 || *minute > 59) return std::nullopt;
    return static_cast<int>(*hour * 60 + *minute);
}

}  // namespace tallowbrook::host
