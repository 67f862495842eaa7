// Reveals the shell of a session inside an editor, or at least opens the editor's window.
#pragma once

#include <functional>
#include <string>

#include "EventBridge/TallowbrookPaths.h"
#include "Focus/FocusOperations.h"
#include "Focus/FocusOutcome.h"
#include "Terminal/EditorBridge.h"

namespace tallowbrook::host {

struct EditorFocus {
    const TallowbrookPaths& paths;
    const FocusOperations& operations;
    // Opens the path in the editor of this window; false when that fails.
    std::function<bool(const EditorWindow& window, const std::string& target)> open;

    // Asks the editor's extension to show this shell. Where no extension takes the request, opens
    // what the window shows.
    FocusOutcome reveal(const EditorWindow& window, pid_t shellPid) const;

    // Opens what the window shows, where the shell is not known.
    FocusOutcome openWindow(const EditorWindow& window) const;
};

// The editor that calls itself `appName`; VS Code where no other fits.
const EditorApp& editorNamed(std::string_view appName);

}  // namespace tallowbrook::host
