// The step from the sources of events into the store: every batch in one transaction.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Notifications/Calendar.h"
#include "Notifications/NotificationPreferences.h"
#include "Output/Sentence.h"
#include "Preferences/HostSettings.h"
#include "SessionState/SessionSnapshot.h"
#include "Store/Database.h"
#include "Watch/EventSource.h"

namespace tallowbrook::host {

struct IngestReport {
    std::int64_t stored = 0;
    std::int64_t seenBefore = 0;        // delivered a second time, and skipped
    std::int64_t invalidLines = 0;      // no events, and skipped
    std::vector<std::string> troubles;  // whole sentences; what they name was kept for later
    // The sessions, by storage id, of what would have been told had it not come too late.
    std::set<std::string> missedSessions;
    bool operator==(const IngestReport&) const = default;

    // Says how many lines were skipped; absent where none was.
    std::optional<Sentence> skippedLines() const;
};

struct Ingest {
    NotificationPreferences preferences;
    Calendar calendar;
    std::vector<std::string> channels;  // that are to tell what is due
    // A turn that took less is not told as finished; one whose prompt is not known is.
    Seconds completionAfter = defaultCompletionAfter;
    // Whether the agent of the session has waited for the user from before this time until now.
    std::function<bool(const SessionKey&, Instant)> hasWaitedSince = [](const auto&, auto) {
        return false;
    };

    // Claims what the source holds and stores it, oldest first: the events, the sessions as they
    // are then, and the notifications that are due at `now`. No session comes to lie after `now`,
    // whatever its events say; their records stay as they are. A thread of which an agent's notify
    // program alone tells, while its hooks are heard, is none that its user sees: it makes no
    // session. A batch is removed once its transaction is committed; one that cannot be read is
    // kept and does not stop the others. Throws SQLite::Exception when the database fails, or its
    // file is not in its place: that batch and those behind it stay.
    IngestReport run(const EventSource& source, Database& database, Instant now) const;
};

}  // namespace tallowbrook::host
