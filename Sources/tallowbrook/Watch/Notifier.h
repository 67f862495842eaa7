// Hands notifications over to the user, and the outbox that remembers which were.
#pragma once

#include <functional>

#include "Store/EventStore.h"

namespace tallowbrook::host {

struct Notifier {
    // Tells whether the notification was handed over; false keeps it for another try.
    std::function<bool(const NotificationContent& content)> deliver;

    // One line on standard output for each, with the time of day, and the terminal's bell where one
    // listens.
    static Notifier printing();
};

// Hands over what is pending in the order in which it was decided, and records each one as told
// once it was. One whose event is older than `maxEventAge` by now is dropped: the host was away.
// Stops at the first that cannot be handed over, and is false then. Throws SQLite::Exception when
// the store fails.
bool deliverPending(EventStore& store, const Notifier& notifier, Seconds maxEventAge, Instant now);

}  // namespace tallowbrook::host
