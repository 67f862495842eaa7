// Finds the tab in which a session runs by its terminal device, on a system where the applications
// that show terminals can be scripted.
#pragma once

#include <optional>
#include <string>

#include "Focus/EditorFocus.h"
#include "Focus/FocusOperations.h"
#include "Focus/FocusOutcome.h"
#include "Terminal/TerminalApp.h"

namespace tallowbrook::host {

class TabFocus {
 public:
    TabFocus(const TallowbrookPaths& paths, const FocusOperations& operations);

    // Asks the application that owns the device for its tab; where no owner is known, every
    // supported one that runs. Of a device that belongs to tmux, selects the pane first and goes on
    // with the device of a client that shows it.
    FocusOutcome focus(const std::string& deviceName) const;

 private:
    FocusOutcome focusThroughTmux(const std::string& deviceName) const;
    FocusOutcome focusDirectly(const std::string& deviceName,
                               const std::vector<TerminalHost::Process>& chain) const;
    FocusOutcome focusInApp(TerminalApp app, const std::string& deviceName) const;
    FocusOutcome focusInEditor(const std::string& bundle, const std::string& deviceName) const;
    FocusOutcome tryEveryApp(const std::string& deviceName) const;

    // "com.apple.Terminal" for the process of an application.
    std::optional<std::string> bundleOf(pid_t pid) const;
    bool isRunning(TerminalApp app) const;
    // The script's answer, "found" or "missing"; absent when it failed.
    std::optional<std::string> runScript(TerminalApp app, const std::string& deviceName) const;
    bool activate(std::string_view bundle) const;
    std::string output(const std::string& program, const std::vector<std::string>& arguments) const;

    const TallowbrookPaths& paths_;
    const FocusOperations& operations_;
};

}  // namespace tallowbrook::host
