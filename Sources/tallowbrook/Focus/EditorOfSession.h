// The editor in whose terminals a session runs, also where no extension tells of it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Focus/FocusOperations.h"
#include "SessionState/SessionSnapshot.h"
#include "Terminal/EditorApp.h"

namespace tallowbrook::host {

// Of `EditorBridge::editors`; null where no process above the session belongs to one, or none is
// known, as for a session that has ended.
const EditorApp* editorOf(const SessionSnapshot& session, const FocusOperations& operations);

// The editor whose processes have this command name, cut off as kernels do; null for any other.
const EditorApp* editorOfProgram(std::string_view name);

// The command names of the processes above a session. One implementation per system.
std::vector<std::string> programsAbove(const SessionSnapshot& session,
                                       const FocusOperations& operations);

}  // namespace tallowbrook::host
