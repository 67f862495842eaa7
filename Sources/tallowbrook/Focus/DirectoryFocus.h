// Finds the place where a session runs by its working directory alone.
#pragma once

#include "Focus/EditorFocus.h"
#include "Focus/Focus.h"

namespace tallowbrook::host {

struct DirectoryFocus {
    const FocusOperations& operations;
    EditorFocus editor;
    // Whether an agent runs on this terminal, named with "/dev/".
    std::function<bool(const std::string& tty)> hasAgent;

    // Focuses the one tmux pane or editor window that works in this directory. With several, none:
    // the wrong one would be worse than saying so.
    FocusOutcome focus(const std::string& directory) const;
};

}  // namespace tallowbrook::host
