// What a host says when it begins: what it watches, and what it will not tell.
#pragma once

#include <string>
#include <vector>

#include "Setup/AgentHealth.h"

namespace tallowbrook::host {

// What is worth saying of an agent to someone who starts to watch.
struct GreetedAgent {
    Provider provider = Provider::claudeCode;
    AgentHealth::State state = AgentHealth::State::notSetUp;
};

// "Watching Claude Code and Codex CLI since 14:05. Ctrl-C ends.", or that no agent is set up; then
// the agents that have to be set up again, where there are any, and the sentences of `muted`. Three
// lines at most, each with a line feed at its end.
std::string greeting(const std::vector<GreetedAgent>& agents, const std::vector<Sentence>& muted,
                     Instant now);

// The same of a home that no agent reports to.
std::string greetingOfAnotherHome(const std::vector<Sentence>& muted, Instant now);

}  // namespace tallowbrook::host
