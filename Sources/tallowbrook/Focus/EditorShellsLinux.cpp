#include "Focus/AgentProcessesLinux.h"
#include "Focus/EditorShells.h"

namespace tallowbrook::host {

std::optional<EditorBridge::Owner> editorShellOf(const SessionSnapshot& session,
                                                 const std::vector<EditorWindow>& windows,
                                                 const FocusOperations& operations) {
    if (!session.cwd) return std::nullopt;
    const auto shells = editorShellsIn(*session.cwd, windows, agentFamiliesIn, operations);
    if (shells.size() != 1) return std::nullopt;
    return shells.front();
}

}  // namespace tallowbrook::host
