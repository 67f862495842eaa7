// What the user was told of a session, and what not and why, as rows below an explanation.
//
// Pure functions; safe from any thread, while none changes the environment.
#pragma once

#include <string>
#include <vector>

#include "Store/Outbox.h"
#include "Store/SessionStore.h"

namespace tallowbrook::host {

// All that is stored of one session about what was told.
struct Telling {
    std::vector<NotificationRecord> notifications;
    std::vector<Untold> untold;
    std::vector<StoredEvent> events;  // that say what the untold was about
};

// The latest rows, oldest first: when the event came, what it was about, and what each channel has
// come to with it, or why it was not told: "14:05  needs permission  told at 14:05 (lines)". Each
// with a line feed at its end; the channels of one notification stand one below the other. Empty
// where nothing was to be told.
std::string toldRows(const Telling& telling, Provider provider, Instant now, std::size_t atMost);

}  // namespace tallowbrook::host
