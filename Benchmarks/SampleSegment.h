// Events as a busy day of several sessions makes them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Domain/AgentEvent.h"

namespace tallowbrook::bench {

// Of `sessions` sessions in turns, each with prompts, tools, permissions and completed turns; with
// fresh ids and ascending times that end now.
std::vector<AgentEvent> sampleEvents(std::size_t count, std::size_t sessions);

// The lines of the events, as helpers write them.
std::string segmentText(const std::vector<AgentEvent>& events);

}  // namespace tallowbrook::bench
