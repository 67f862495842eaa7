// What an event means for the user, beyond what it says. The event's record is never changed: the
// reducer and the policy see what is made here.
//
// Pure functions; safe from any thread.
#pragma once

#include <optional>
#include <string>

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
//  - A session that ends in the middle of a turn has failed that turn, unless its user left it: by
//    a word of the agent's, or by closing its terminal, without which the end is then reported.
std::optional<AgentEvent> interpreted(const AgentEvent& event,
                                      const std::optional<SessionSnapshot>& session);

// What only the event as it came says of the session that `meant` has led to: that it ended with
// its unfinished turn, or, just after that, what went wrong in it. An agent's reports of the two
// may come in either order.
void settle(SessionSnapshot& session, const AgentEvent& event, const AgentEvent& meant,
            EventEffect effect);

// Words what a question or a plan is told with: "Claude Code has a question", "docs-site — waiting
// for your answer."; an unfinished end: "Codex CLI ended without finishing"; and every session by
// its name instead of its project's, where the two differ.
void wordAsMeant(NotificationContent& content, const AgentEvent& event,
                 const SessionSnapshot& session, const std::string& name);
void wordWithName(NotificationContent& content, const SessionSnapshot& session,
                  const std::string& name);

}  // namespace tallowbrook::host
