// A notification as other programs read it; docs/formats.md describes it for their authors.
//
// Pure; safe from any thread.
#pragma once

#include <string>

#include "Channels/Channel.h"
#include "Domain/Instant.h"

namespace tallowbrook::host {

// One line of JSON (RFC 8259, UTF-8) with a line feed at its end. `at`: when it is told.
std::string notificationJSON(const Delivery& delivery, Instant at);

}  // namespace tallowbrook::host
