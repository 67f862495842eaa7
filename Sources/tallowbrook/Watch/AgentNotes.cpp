#include "Watch/AgentNotes.h"

#include "Watch/AgentDirectory.h"
#include "Watch/ClaudeNotes.h"
#include "Watch/CodexNotes.h"

namespace tallowbrook::host {

std::vector<AgentNotes> AgentNotes::live() {
    std::vector<AgentNotes> notes;
    if (const auto directory = agentDirectory(Provider::claudeCode))
        notes.push_back(ClaudeNotes::in(*directory));
    if (const auto directory = agentDirectory(Provider::codexCLI))
        notes.push_back(CodexNotes::in(*directory));
    return notes;
}

}  // namespace tallowbrook::host
