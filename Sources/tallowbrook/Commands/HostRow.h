// Whether a host runs on a home, as reports show it.
#pragma once

#include <optional>
#include <string>

#include "EventBridge/TallowbrookPaths.h"
#include "Watch/HostLock.h"

namespace tallowbrook::host {

// Of what `HostLock::holder` gives: "Host: running since 14:05 (process 4242)", or "Host: not
// running, nobody is told anything; run \"tallowbrook watch\"". With a line feed at its end.
std::string hostRow(const std::optional<HostHolder>& host, Instant now);

// The same as a JSON object (RFC 8259): "running", and "pid" and "since" as far as they are known.
std::string hostJSON(const std::optional<HostHolder>& host);

}  // namespace tallowbrook::host
