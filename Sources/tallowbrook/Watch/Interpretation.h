// What an event means for the user, beyond what it says. The event's record is never changed: the
// reducer and the policy see what is made here.
//
// Pure functions; safe from any thread.
#pragma once

#include <optional>

#include "Domain/AgentEvent.h"
#include "Notifications/NotificationPolicy.h"
#include "SessionState/SessionSnapshot.h"

namespace tallowbrook::host {

// The event as it is meant; absent where it means just what it says. `session` is the one that it
// is about, as it is before it.
//  - An agent that asks for leave to ask a question, or to leave its plan to the user, wants an
//    answer, no permission. Its later reminder of an open dialog is about the same.
//  - A session keeps the directory in which it began, or was last begun again: the agent's own
//    change of directory makes it no other project's.
std::optional<AgentEvent> interpreted(const AgentEvent& event,
                                      const std::optional<SessionSnapshot>& session);

// Words what a question or a plan is told with: "Claude Code has a question", "docs-site — waiting
// for your answer.".
void wordAsMeant(NotificationContent& content, const AgentEvent& event,
                 const SessionSnapshot& session);

}  // namespace tallowbrook::host
