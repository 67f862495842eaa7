// The shells in editors' terminals that belong to a session.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Focus/FocusOperations.h"
#include "SessionState/SessionSnapshot.h"
#include "Terminal/EditorBridge.h"

namespace tallowbrook::host {

// Gives the agents that work in a directory, with all of their ancestors.
using AgentFamilies = std::function<std::vector<pid_t>(const std::string& directory)>;

// By a directory: the shells from which an agent runs there; where there are none, those that are
// there themselves.
std::vector<EditorBridge::Owner> editorShellsIn(const std::string& directory,
                                                const std::vector<EditorWindow>& windows,
                                                const AgentFamilies& families,
                                                const FocusOperations& operations);

// By a terminal device, such as ttys003: the shell that runs on it, or above what does.
std::optional<EditorBridge::Owner> editorShellOn(const std::string& deviceName,
                                                 const std::vector<EditorWindow>& windows,
                                                 const FocusOperations& operations);

// The one shell in which the session runs, by what its system knows of it: its terminal device or
// its directory. Absent where none or several fit. One implementation per system.
std::optional<EditorBridge::Owner> editorShellOf(const SessionSnapshot& session,
                                                 const std::vector<EditorWindow>& windows,
                                                 const FocusOperations& operations);

}  // namespace tallowbrook::host
