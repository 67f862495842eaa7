#include "Focus/DirectoryFocus.h"

#include <fmt/core.h>

#include <algorithm>

#include "Focus/Tmux.h"

namespace tallowbrook::host {
namespace {

bool isWithin(const std::string& directory, const std::string& folder) {
    return directory == folder ||
           directory.starts_with(folder.ends_with('/') ? folder : folder + "/");
}

// Selects the pane even where no client shows it: it is then the first thing the user sees.
FocusOutcome focusPane(const Tmux& tmux, const Tmux::Pane& pane) {
    if (!tmux.select(pane))
        return FocusOutcome::nothing(fmt::format("The tmux pane {} cannot be selected.", pane.id));
    if (tmux.show(pane))
        return FocusOutcome::focused(fmt::format("The tmux pane {} was selected.", pane.id));
    return Tmux::selectedUnseen(pane);
}

// An editor window that may have the session, with the shell in it where that is known.
struct EditorPlace {
    EditorWindow window;
    std::optional<pid_t> shellPid;
};

std::vector<EditorPlace> editorPlaces(const std::vector<EditorWindow>& windows,
                                      const std::string& directory, const AgentFamilies& families,
                                      const FocusOperations& operations) {
    std::vector<EditorPlace> places;
    for (const auto& [window, shell] : editorShellsIn(directory, windows, families, operations))
        places.push_back({window, shell});
    if (!places.empty()) return places;
    // A shell that has gone elsewhere, or whose directory is not told, still has its window.
    for (const auto& window : windows)
        if (std::ranges::any_of(window.folders, [&](const std::string& folder) {
                return isWithin(directory, folder);
            }))
            places.push_back({window, std::nullopt});
    return places;
}

}  // namespace

FocusOutcome DirectoryFocus::focus(const std::string& directory) const {
    const auto tmux = Tmux::find(operations);
    std::vector<Tmux::Pane> panes;
    if (tmux) panes = tmux->panes();
    std::erase_if(panes, [&](const Tmux::Pane& pane) { return pane.directory != directory; });
    // A shell beside the agent's, in a split window, is what several panes mostly are.
    if (panes.size() > 1) {
        auto withAgent = panes;
        std::erase_if(withAgent,
                      [&](const Tmux::Pane& pane) { return !hasAgent(pane.devicePath); });
        if (!withAgent.empty()) panes = std::move(withAgent);
    }
    const auto places = editorPlaces(EditorBridge::windows(editor.paths.editorsDirectory()),
                                     directory, agentFamilies, operations);

    const auto count = panes.size() + places.size();
    if (count == 0)
        return FocusOutcome::nothing(
            fmt::format("No tmux pane and no editor window works in {}.", directory));
    if (count > 1)
        return FocusOutcome::nothing(fmt::format(
            "{} tmux panes and editor windows work in {}; none was chosen.", count, directory));
    if (!panes.empty()) return focusPane(*tmux, panes.front());
    const auto& [window, shellPid] = places.front();
    return shellPid ? editor.reveal(window, *shellPid) : editor.openWindow(window);
}

}  // namespace tallowbrook::host
