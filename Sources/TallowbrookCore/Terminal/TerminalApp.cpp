#include "Terminal/TerminalApp.h"

#include <algorithm>

#include "Terminal/TerminalDevice.h"
#include "Terminal/TerminalLocation.h"

namespace tallowbrook {

namespace {

// A script is the head, the bundle identifier, the middle, the path of the terminal and the tail.
constexpr std::string_view head = R"script(with timeout of 3 seconds
    tell application id ")script";

struct Description {
    TerminalApp app;
    std::string_view bundleIdentifier;
    std::string_view displayName;
    std::string_view middle;
    std::string_view tail;
};

constexpr Description iTerm2{
    TerminalApp::iTerm2, "com.googlecode.iterm2", "iTerm2",
    R"script("
        repeat with w in windows
            repeat with t in tabs of w
                repeat with s in sessions of t
                    if tty of s is ")script",
    R"script(" then
                        select w
                        select t
                        select s
                        activate
                        return "found"
                    end if
                end repeat
            end repeat
        end repeat
    end tell
end timeout
return "missing")script",
};

// A window without tabs, or one that refuses the question, is skipped by the try block.
constexpr Description terminal{
    TerminalApp::terminal,
    "com.apple.Terminal",
    "Terminal",
    R"script("
        repeat with w in windows
            try
                repeat with t in tabs of w
                    if tty of t is ")script",
    R"script(" then
                        if miniaturized of w then set miniaturized of w to false
                        set selected tab of w to t
                        set index of w to 1
                        activate
                        return "found"
                    end if
                end repeat
            end try
        end repeat
    end tell
end timeout
return "missing")script",
};

constexpr Description ghostty{
    TerminalApp::ghostty, "com.mitchellh.ghostty", "Ghostty",
    R"script("
        repeat with t in terminals
            if tty of t is ")script",
    R"script(" then
                focus t
                activate
                return "found"
            end if
        end repeat
    end tell
end timeout
return "missing")script",
};

constexpr std::array descriptions{iTerm2, terminal, ghostty};

const Description& descriptionOf(TerminalApp app) {
    return *std::ranges::find(descriptions, app, &Description::app);
}

}  // namespace

std::string_view bundleIdentifier(TerminalApp app) { return descriptionOf(app).bundleIdentifier; }

std::optional<TerminalApp> terminalAppOf(std::string_view bundleIdentifier) {
    const auto found =
        std::ranges::find(descriptions, bundleIdentifier, &Description::bundleIdentifier);
    if (found == descriptions.end()) return std::nullopt;
    return found->app;
}

std::string_view displayName(TerminalApp app) { return descriptionOf(app).displayName; }

std::optional<std::string> focusScript(TerminalApp app, std::string_view tty) {
    // What passes holds no quote and no backslash, so it needs no escaping.
    if (!ControllingTerminal::sanitize(tty)) return std::nullopt;
    const auto device = TerminalDevice::parse(tty);
    if (!device) return std::nullopt;
    const Description& description = descriptionOf(app);
    std::string script{head};
    script.append(description.bundleIdentifier).append(description.middle);
    script.append(device->path()).append(description.tail);
    return script;
}

}  // namespace tallowbrook
