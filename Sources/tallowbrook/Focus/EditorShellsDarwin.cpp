#include "Focus/EditorShells.h"

namespace tallowbrook::host {

std::optional<EditorBridge::Owner> editorShellOf(const SessionSnapshot& session,
                                                 const std::vector<EditorWindow>& windows,
                                                 const FocusOperations& operations) {
    if (!session.tty) return std::nullopt;
    return editorShellOn(*session.tty, windows, operations);
}

}  // namespace tallowbrook::host
