// What there is to say of one session beside its status.
//
// Pure functions; safe from any thread. The texts may hold what came from files, and are made
// printable where they are shown.
#pragma once

#include <string>

#include "Lists/SessionList.h"

namespace tallowbrook::host {

// What it waits for, failed at or ended by, in a word or two: "Bash", "server error". Empty where
// `statusText` says it all.
std::string reasonText(const ListedSession& session);

// Since when it is as `statusText` says.
Instant statusSince(const ListedSession& session);

// "needs permission (Bash), 6 min"
std::string statusPhrase(const ListedSession& session, Instant now);

}  // namespace tallowbrook::host
