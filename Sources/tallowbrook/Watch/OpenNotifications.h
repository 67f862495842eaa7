// What the outbox has still to tell of each session, so that what a session has left behind is not
// told after it.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "SessionState/SessionSnapshot.h"
#include "Store/Outbox.h"

namespace tallowbrook::host {

// Of one batch of events, decided at `now`. Throws SQLite::Exception when the database fails.
class OpenNotifications {
 public:
    OpenNotifications(Outbox& outbox, Instant now) : outbox_{outbox}, now_{now} {}

    void add(std::int64_t number, const NotificationContent& content);

    // The status of the session has changed to what it is: a request that was answered and a turn
    // that another one has followed are folded away, by every channel that has not told them. A
    // failure stays, and so does a request while another one of its session is open.
    void followStatus(const SessionSnapshot& session);

 private:
    struct Open {
        std::int64_t number = 0;
        NotificationKind kind = NotificationKind::attention;
        UUID eventID{};
    };
    using BySession = std::unordered_map<std::string, std::vector<Open>>;

    BySession& bySession();

    Outbox& outbox_;
    Instant now_;
    std::optional<BySession> bySession_;  // absent until it is asked for
};

}  // namespace tallowbrook::host
