#include "Focus/EditorFocus.h"

#include <fmt/core.h>
#include <unistd.h>

#include <cerrno>

#include "Terminal/EditorApp.h"

namespace tallowbrook::host {
namespace {

// A request that no extension took must not act later, when something else was done instead. False
// when it has been taken in the last moment.
bool withdraw(const std::filesystem::path& request) {
    return unlink(request.c_str()) == 0 || errno != ENOENT;
}

}  // namespace

FocusOutcome EditorFocus::reveal(const EditorWindow& window, pid_t shellPid) const {
    const auto request =
        EditorBridge::requestTerminal(shellPid, paths.editorRequestsDirectory(), currentInstant());
    if (request && (operations.requestIsTaken(*request) || !withdraw(*request)))
        return FocusOutcome::focused(
            fmt::format("{} was asked to show the session's terminal.", window.appName));
    return openWindow(window);
}

FocusOutcome EditorFocus::openWindow(const EditorWindow& window) const {
    // To open what a window shows raises that window instead of making another.
    const auto target = window.openTarget();
    // What is no absolute path the editor, or the program that starts it, may take for an option or
    // an address.
    if (!target || !target->starts_with('/'))
        return FocusOutcome::nothing(fmt::format(
            "{} has the session's terminal, but its window shows no folder by which it could be "
            "opened.",
            window.appName));
    if (open(window, *target))
        return FocusOutcome::instead(
            fmt::format("{} did not show the terminal itself; {} was opened in it instead.",
                        window.appName, *target));
    return FocusOutcome::nothing(fmt::format("{} could not be opened.", window.appName));
}

const EditorApp& editorNamed(std::string_view appName) {
    // Editors call themselves by longer names than the ones they are known by: "Visual Studio
    // Code".
    const auto* found = &EditorBridge::editors.front();
    for (const auto& editor : EditorBridge::editors) {
        if (editor.name == appName) return editor;
        // What tells it from the others: "Insiders" of "VS Code Insiders".
        const auto word = editor.name.substr(editor.name.rfind(' ') + 1);
        if (word != "Code" && appName.find(word) != std::string_view::npos) found = &editor;
    }
    return *found;
}

}  // namespace tallowbrook::host
