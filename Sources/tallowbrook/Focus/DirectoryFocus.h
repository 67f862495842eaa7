// Finds the place where a session runs by its working directory alone, for a system where the
// session's terminal device is not known.
#pragma once

#include "Focus/EditorFocus.h"
#include "Focus/EditorShells.h"
#include "Focus/FocusOperations.h"
#include "Focus/FocusOutcome.h"

namespace tallowbrook::host {

struct DirectoryFocus {
    const FocusOperations& operations;
    EditorFocus editor;
    // Whether an agent runs on this terminal device.
    std::function<bool(const std::string& devicePath)> hasAgent;
    AgentFamilies agentFamilies;

    // Focuses the one tmux pane or editor window that works in this directory; of several panes
    // or terminals there the one with an agent. Where several remain, none: the wrong one would be
    // worse than saying so.
    FocusOutcome focus(const std::string& directory) const;
};

}  // namespace tallowbrook::host
