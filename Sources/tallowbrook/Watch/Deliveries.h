// Hands what is in the outbox over to the channels, and writes down what came of it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "Channels/Channel.h"
#include "Store/Outbox.h"

namespace tallowbrook::host {

struct DeliveryOutlook {
    bool failed = false;          // an attempt that was made now
    std::optional<Instant> next;  // when the next attempt is due
    std::vector<NotificationContent> begun;
    std::vector<std::int64_t> clicked;  // notifications
};

// Writes down what has become of the channel's deliveries, and begins none. Otherwise as `deliver`.
DeliveryOutlook settle(const Channel& channel, Outbox& outbox, Instant now);

// Writes down what has become of the channel's deliveries, then makes one attempt at each that is
// pending and due, in the order of the decisions. Stops at the first that fails or is not due, so
// that nothing is told before what was decided before it. A channel that can take notifications
// back is spared those that are over, which it would have to take back at once. `now` gives the
// time at each call. Throws SQLite::Exception when the database fails; what was handed over and not
// written down is told again.
DeliveryOutlook deliver(
    const Channel& channel, Outbox& outbox, const std::function<Instant()>& now,
    const std::function<bool(const NotificationContent&)>& isOver = [](const auto&) {
        return false;
    });

}  // namespace tallowbrook::host
