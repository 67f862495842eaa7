// The terminal applications whose tabs can be brought to the front, and the AppleScript that does
// it.
//
// The scripts are only generated here: the host runs them. Pure functions; safe from any thread.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Domain/EnumNames.h"

namespace tallowbrook {

enum class TerminalApp { iTerm2, terminal, ghostty };
inline constexpr std::array terminalAppNames{
    std::pair{TerminalApp::iTerm2, std::string_view{"iTerm2"}},
    std::pair{TerminalApp::terminal, std::string_view{"terminal"}},
    std::pair{TerminalApp::ghostty, std::string_view{"ghostty"}},
};
constexpr const auto& namesOf(TerminalApp) { return terminalAppNames; }

// "com.apple.Terminal"
std::string_view bundleIdentifier(TerminalApp app);

// The application of exactly this bundle identifier; absent when it is none of these.
std::optional<TerminalApp> terminalAppOf(std::string_view bundleIdentifier);

// "Terminal"
std::string_view displayName(TerminalApp app);

// An AppleScript that raises the window, tab and session on the terminal `tty`, such as ttys003.
// Run, it answers "found", or "missing" when no tab of the application is on that terminal. An
// application that does not answer for 3 seconds, does not run or may not be scripted makes it
// fail. Absent for a name that `ControllingTerminal::sanitize` refuses.
std::optional<std::string> focusScript(TerminalApp app, std::string_view tty);

}  // namespace tallowbrook
