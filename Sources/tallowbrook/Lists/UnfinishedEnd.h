// A session that ended in the middle of a turn: it is `failed`, and by the end of the session,
// which by itself fails none.
//
// Pure functions; safe from any thread.
#pragma once

#include <functional>
#include <string>

#include "Domain/AgentEvent.h"
#include "SessionState/SessionSnapshot.h"

namespace tallowbrook::host {

bool endedWithoutFinishing(const SessionSnapshot& session);

// Makes a session that the event has failed one that ended with it.
void markUnfinishedEnd(SessionSnapshot& session, const AgentEvent& sessionEnd);

// One paragraph on why a session has its status, of an unfinished end too.
std::string explanationText(const SessionSnapshot& session, Instant now,
                            const std::function<std::string(Instant)>& formatTime);

}  // namespace tallowbrook::host
