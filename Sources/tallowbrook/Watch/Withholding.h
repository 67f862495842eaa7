// The last look at what is to be told: what the user has muted, and what happens before the user's
// eyes, is not told, and that is written down.
#pragma once

#include <cstdint>
#include <functional>

#include "Preferences/Mutes.h"
#include "Store/Database.h"
#include "Store/Outbox.h"

namespace tallowbrook::host {

// What the user looks at; see `Gaze`. By default nothing, and nobody is asked.
struct Looking {
    std::function<void()> ask = [] {};
    std::function<bool()> isAwaited = [] { return false; };
    std::function<bool(const SessionSnapshot& session)> isOn = [](const auto&) { return false; };
};

// Used by one thread.
class Withholding {
 public:
    explicit Withholding(Looking looking) : looking_{std::move(looking)} {}

    // Looks at each notification once, before any channel has begun it. False while an answer is
    // awaited; nothing is to be told until then. A reminder that was held back because the user was
    // there is not counted as sent. Throws SQLite::Exception when the database fails.
    bool run(Database& database, const std::vector<std::string>& channels, const Mutes& mutes,
             bool tellsWhileLooking, Instant now);

 private:
    void lookAt(const StoredNotification& notification, Database& database, const Mutes& mutes,
                bool tellsWhileLooking, Instant now);

    Looking looking_;
    bool hasAsked_ = false;
    std::int64_t lookedAtUpTo_ = 0;  // the number of a notification
};

}  // namespace tallowbrook::host
