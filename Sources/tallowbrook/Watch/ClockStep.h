// What a clock that was ahead, this machine's or that of an event, must not do to a session: mute
// it until that time comes.
#pragma once

#include <optional>

#include "Domain/AgentEvent.h"
#include "SessionState/SessionSnapshot.h"
#include "Store/Database.h"

namespace tallowbrook::host {

// The event as the session is to see it where it claims to be of a time after `now`: as of now.
// Absent where it does not.
std::optional<AgentEvent> asOfNow(const AgentEvent& event, Instant now);

// Whether the time of the event is too far ahead of `now` to order the events behind it. One that
// came while the host was at work is not.
bool isFarAhead(const AgentEvent& event, Instant now);

// Lets the next event of the session count, whatever its time.
void forgetOrder(SessionSnapshot& session);

// Sessions that were heard of after `now`, since the clock was set back meanwhile, go on from now:
// what they say happened later happened now, and their next event counts. Throws SQLite::Exception
// when the database fails.
void bringSessionsBack(Database& database, Instant now);

}  // namespace tallowbrook::host
