// What the live view says of one session.
//
// Pure functions; safe from any thread. The texts may hold what came from files, and are made
// printable where they are shown.
#pragma once

#include <string>

#include "Lists/SessionList.h"
#include "View/Picture.h"

namespace tallowbrook::host {

std::string agentText(const ListedSession& session);

// What it is about, in a word or two: "Bash", "server error"; empty where there is no more to say.
std::string reasonText(const ListedSession& session);

// Since when it is as `statusText` of the lists says.
Instant statusSince(const ListedSession& session);

bool hasEnded(const ListedSession& session);

Symbol symbolOf(SessionStatus status);
Style styleOf(SessionStatus status);

}  // namespace tallowbrook::host
