#include "Focus/TabFocus.h"

#include <fmt/core.h>

#include <algorithm>

#include "Focus/EditorShells.h"
#include "Focus/Tmux.h"

namespace tallowbrook::host {
namespace {

// By their full paths: none of them may be another program of that name on PATH.
constexpr auto applicationInfo = "/usr/bin/lsappinfo";
constexpr auto scriptRunner = "/usr/bin/osascript";
constexpr auto opener = "/usr/bin/open";
constexpr std::string_view deviceDirectory = "/dev/";

// What stands between the last pair of quotes: `"CFBundleIdentifier"="com.apple.Terminal"`.
std::optional<std::string> lastQuoted(std::string_view text) {
    const auto end = text.rfind('"');
    if (end == std::string_view::npos || end == 0) return std::nullopt;
    const auto start = text.rfind('"', end - 1);
    if (start == std::string_view::npos || start + 1 == end) return std::nullopt;
    return std::string{text.substr(start + 1, end - start - 1)};
}

std::string trimmed(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
    return text;
}

}  // namespace

TabFocus::TabFocus(const TallowbrookPaths& paths, const FocusOperations& operations)
    : paths_{paths}, operations_{operations} {}

FocusOutcome TabFocus::focus(const std::string& deviceName) const {
    const auto chain = operations_.hostChain(deviceName);
    return TerminalHost::isTmux(chain) ? focusThroughTmux(deviceName)
                                       : focusDirectly(deviceName, chain);
}

FocusOutcome TabFocus::focusThroughTmux(const std::string& deviceName) const {
    const auto tmux = Tmux::find(operations_);
    if (!tmux) return FocusOutcome::nothing("The session runs in tmux, which is not on the PATH.");
    const auto panes = tmux->panes();
    const auto pane = std::ranges::find(panes, std::string{deviceDirectory} + deviceName,
                                        &Tmux::Pane::devicePath);
    if (pane == panes.end() || !tmux->select(*pane))
        return FocusOutcome::nothing("The session runs in tmux, but its pane was not found.");
    const auto clientPath = tmux->show(*pane);
    if (!clientPath) return Tmux::selectedUnseen(*pane);
    const auto clientName =
        clientPath->substr(std::min(deviceDirectory.size(), clientPath->size()));
    auto outcome = focusDirectly(clientName, operations_.hostChain(clientName));
    const Sentence selected{fmt::format("The tmux pane {} was selected.", pane->id)};
    outcome.sentence = selected.followedBy(outcome.sentence.text());
    if (outcome.result == FocusOutcome::Result::nothing)
        outcome.result = FocusOutcome::Result::instead;
    return outcome;
}

FocusOutcome TabFocus::focusDirectly(const std::string& deviceName,
                                     const std::vector<TerminalHost::Process>& chain) const {
    const auto editors = EditorBridge::bundleIdentifiers();
    // The nearest ancestor that is an application owns the device; shells between them are none.
    for (const auto& process : chain) {
        const auto bundle = bundleOf(process.pid);
        if (!bundle) continue;
        if (const auto app = terminalAppOf(*bundle)) return focusInApp(*app, deviceName);
        if (editors.contains(*bundle)) return focusInEditor(*bundle, deviceName);
    }
    return tryEveryApp(deviceName);
}

FocusOutcome TabFocus::focusInApp(TerminalApp app, const std::string& deviceName) const {
    const auto answer = runScript(app, deviceName);
    if (answer == "found")
        return FocusOutcome::focused(fmt::format("{} was brought to the front.", displayName(app)));
    // A refusal by the system looks like any other failure of a script.
    const auto reason = answer == "missing"
                            ? "has no tab with the session's terminal"
                            : "could not be asked for the tab; the system may not allow it to be "
                              "controlled";
    if (activate(bundleIdentifier(app)))
        return FocusOutcome::instead(
            fmt::format("{0} {1}; {0} itself was brought to the front.", displayName(app), reason));
    return FocusOutcome::nothing(fmt::format("{} {}.", displayName(app), reason));
}

FocusOutcome TabFocus::focusInEditor(const std::string& bundle,
                                     const std::string& deviceName) const {
    const auto owner =
        editorShellOn(deviceName, EditorBridge::windows(paths_.editorsDirectory()), operations_);
    const auto& editors = EditorBridge::editors;
    const auto editor = std::ranges::find(editors, bundle, &EditorApp::bundleIdentifier);
    if (!owner) {
        if (activate(bundle))
            return FocusOutcome::instead(fmt::format(
                "{0} was brought to the front. Its extension, which would find the terminal, is "
                "at {1}.",
                editor->name, editor->extensionPageURL()));
        return FocusOutcome::nothing(fmt::format("{} could not be opened.", editor->name));
    }
    const auto open = [&](const EditorWindow&, const std::string& target) {
        const auto result = operations_.run(opener, {"-b", bundle, target});
        return result && result->status == 0;
    };
    return EditorFocus{paths_, operations_, open}.reveal(owner->window, owner->shellPid);
}

FocusOutcome TabFocus::tryEveryApp(const std::string& deviceName) const {
    // A script for an application that does not run would start it.
    for (const auto app : allCases<TerminalApp>())
        if (isRunning(app) && runScript(app, deviceName) == "found")
            return FocusOutcome::focused(
                fmt::format("{} was brought to the front.", displayName(app)));
    return FocusOutcome::nothing(
        "The session's terminal belongs to no running iTerm2, Terminal, Ghostty or editor.");
}

std::optional<std::string> TabFocus::bundleOf(pid_t pid) const {
    // The tool knows the process by a serial number of its own.
    const auto serial = trimmed(output(applicationInfo, {"find", "pid=" + std::to_string(pid)}));
    if (serial.empty()) return std::nullopt;
    return lastQuoted(output(applicationInfo, {"info", "-only", "bundleid", serial}));
}

bool TabFocus::isRunning(TerminalApp app) const {
    return !trimmed(
                output(applicationInfo, {"find", "bundleid=" + std::string{bundleIdentifier(app)}}))
                .empty();
}

std::optional<std::string> TabFocus::runScript(TerminalApp app,
                                               const std::string& deviceName) const {
    const auto script = focusScript(app, deviceName);
    if (!script) return std::nullopt;
    const auto result = operations_.run(scriptRunner, {"-e", *script});
    if (!result || result->status != 0) return std::nullopt;
    return trimmed(result->output);
}

bool TabFocus::activate(std::string_view bundle) const {
    const auto result = operations_.run(opener, {"-b", std::string{bundle}});
    return result && result->status == 0;
}

std::string TabFocus::output(const std::string& program,
                             const std::vector<std::string>& arguments) const {
    const auto result = operations_.run(program, arguments);
    return result && result->status == 0 ? result->output : std::string{};
}

}  // namespace tallowbrook::host
