// What the live view says of one session.
//
// Pure functions; safe from any thread. The texts may hold what came from files, and are made
// printable where they are shown.
#pragma once

#include <string>

#include "Lists/SessionWords.h"
#include "View/Picture.h"

namespace tallowbrook::host {

std::string agentText(const ListedSession& session);

bool hasEnded(const ListedSession& session);

Symbol symbolOf(SessionStatus status);
Style styleOf(SessionStatus status);

}  // namespace tallowbrook::host
