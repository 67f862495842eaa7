// All that lies in a spool, looked at without claiming it.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "Domain/AgentEvent.h"
#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook {

struct SpoolContents {
    std::vector<AgentEvent> events;         // oldest first
    std::vector<std::string> invalidLines;  // whole ones that are no events
    std::vector<std::string> tornEnds;      // what stands behind the last line feed of a file

    static SpoolContents of(const TallowbrookPaths& paths);

    // The session ids of the events, as often as they are there.
    std::multiset<std::string> sessions() const;
};

// Whether the spool's lock can be had at once.
bool isSpoolFree(const TallowbrookPaths& paths);

// Fails the test where something below the home is open to others, or closed to its owner.
void expectOwnerOnlyModes(const TallowbrookPaths& paths);

}  // namespace tallowbrook
