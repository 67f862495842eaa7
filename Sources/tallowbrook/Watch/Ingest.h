// The step from the spool into the store: every claimed segment in one transaction.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "EventBridge/SpoolDrainer.h"
#include "Notifications/Calendar.h"
#include "Notifications/NotificationPreferences.h"
#include "Store/EventStore.h"

namespace tallowbrook::host {

struct IngestReport {
    std::int64_t stored = 0;
    std::int64_t seenBefore = 0;        // delivered a second time, and skipped
    std::int64_t invalidLines = 0;      // no events, and skipped
    std::vector<std::string> troubles;  // whole sentences; what they name was kept for later
    bool operator==(const IngestReport&) const = default;
};

struct Ingest {
    SpoolDrainer drainer;
    NotificationPreferences preferences;
    Calendar calendar;

    // Claims what the spool holds and stores it, oldest first: the events, the sessions as they
    // are then, and the notifications that are due at `now`. A segment is removed once its
    // transaction is committed; one that cannot be read is kept and does not stop the others.
    // Throws SQLite::Exception when the store fails: that segment and those behind it stay.
    IngestReport run(EventStore& store, Instant now) const;
};

}  // namespace tallowbrook::host
