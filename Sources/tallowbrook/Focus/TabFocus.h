// Finds the tab in which a session runs by its terminal device, on a system whose terminal
// applications can be scripted.
#pragma once

#include <optional>
#include <string>

#include "Focus/EditorFocus.h"
#include "Focus/Focus.h"
#include "Terminal/TerminalApp.h"

namespace tallowbrook::host {

class TabFocus {
 public:
    TabFocus(const TallowbrookPaths& paths, const FocusOperations& operations);

    // Through tmux the pane is selected first, and then the terminal that shows it is focused. The
    // application that owns the terminal is asked for the tab; where no owner is known, every
    // supported one that runs. `tty` such as ttys003.
    FocusOutcome focus(const std::string& tty) const;

 private:
    FocusOutcome focusThroughTmux(const std::string& tty) const;
    FocusOutcome focusDirectly(const std::string& tty,
                               const std::vector<TerminalHost::Process>& chain) const;
    FocusOutcome focusInApp(TerminalApp app, const std::string& tty) const;
    FocusOutcome focusInEditor(const std::string& bundle, const std::string& tty,
                               const std::vector<TerminalHost::Process>& chain) const;
    FocusOutcome tryEveryApp(const std::string& tty) const;

    // "com.apple.Terminal" for the process of an application.
    std::optional<std::string> bundleOf(pid_t pid) const;
    bool isRunning(TerminalApp app) const;
    // The script's answer, "found" or "missing"; absent when it failed.
    std::optional<std::string> runScript(TerminalApp app, const std::string& tty) const;
    bool activate(std::string_view bundle) const;
    std::string output(const std::string& program, const std::vector<std::string>& arguments) const;

    const TallowbrookPaths& paths_;
    const FocusOperations& operations_;
};

}  // namespace tallowbrook::host
