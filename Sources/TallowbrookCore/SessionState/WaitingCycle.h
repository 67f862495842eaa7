// Steps through the sessions that wait for the user, one further with each quick repetition.
//
// A plain value for one thread at a time; the caller brings the clock.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Domain/Instant.h"

namespace tallowbrook {

struct WaitingCycle {
    struct Pick {
        std::string id;
        Instant at{};
        bool operator==(const Pick&) const = default;
    };
    std::optional<Pick> last;
    bool operator==(const WaitingCycle&) const = default;

    // The id behind the one picked last, the first one again behind the end. Begins with the first
    // id after ten seconds without a call, or where the one picked last has left `ids`. Of equal
    // ids the first counts. Absent, and the last pick forgotten, when `ids` is empty.
    std::optional<std::string> next(const std::vector<std::string>& ids, Instant now);
};

}  // namespace tallowbrook
