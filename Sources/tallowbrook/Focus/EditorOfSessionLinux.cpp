#include "Focus/AgentProcessesLinux.h"
#include "Focus/EditorOfSession.h"
#include "Terminal/ProcessTable.h"

namespace tallowbrook::host {

std::vector<std::string> programsAbove(const SessionSnapshot& session, const FocusOperations&) {
    std::vector<std::string> names;
    if (!session.cwd) return names;
    for (const pid_t pid : agentFamiliesIn(*session.cwd))
        if (auto process = ProcessTable::process(pid)) names.push_back(std::move(process->name));
    return names;
}

}  // namespace tallowbrook::host
