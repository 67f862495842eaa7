// Reveals a terminal inside an editor, or at least opens the editor where it belongs.
#pragma once

#include <functional>
#include <string>

#include "Focus/Focus.h"
#include "Terminal/EditorBridge.h"

namespace tallowbrook::host {

struct EditorFocus {
    const TallowbrookPaths& paths;
    const FocusOperations& operations;
    // Opens the path in the editor of this window; false when that fails.
    std::function<bool(const EditorWindow& window, const std::string& target)> open;

    // Asks the editor's extension for the terminal. Where nobody takes the request, opens what the
    // window shows.
    FocusOutcome reveal(const EditorWindow& window, pid_t shellPid) const;

    // Without a terminal to ask for.
    FocusOutcome openWindow(const EditorWindow& window) const;
};

// The editor that calls itself `appName`; VS Code where no other fits.
const EditorApp& editorNamed(std::string_view appName);

}  // namespace tallowbrook::host
