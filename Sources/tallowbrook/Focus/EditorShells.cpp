#include "Focus/EditorShells.h"

#include <set>

namespace tallowbrook::host {
namespace {

std::vector<EditorBridge::Owner> shellsThat(const std::vector<EditorWindow>& windows,
                                            const std::function<bool(pid_t)>& fits) {
    std::vector<EditorBridge::Owner> shells;
    for (const auto& window : windows)
        for (const pid_t shell : window.shellPids)
            if (fits(shell)) shells.push_back({window, shell});
    return shells;
}

}  // namespace

std::vector<EditorBridge::Owner> editorShellsIn(const std::string& directory,
                                                const std::vector<EditorWindow>& windows,
                                                const AgentFamilies& families,
                                                const FocusOperations& operations) {
    // Mostly there is no editor, and then no process has to be looked at.
    if (windows.empty()) return {};
    const auto listed = families(directory);
    const std::set<pid_t> family{listed.begin(), listed.end()};
    auto shells = shellsThat(windows, [&](pid_t shell) { return family.contains(shell); });
    if (!shells.empty()) return shells;
    return shellsThat(windows,
                      [&](pid_t shell) { return operations.directoryOf(shell) == directory; });
}

std::optional<EditorBridge::Owner> editorShellOn(const std::string& deviceName,
                                                 const std::vector<EditorWindow>& windows,
                                                 const FocusOperations& operations) {
    if (windows.empty()) return std::nullopt;
    // Where a program has opened a device of its own, the editor's shell stands above it.
    std::vector<pid_t> processes;
    for (const auto& process : operations.processesOnDevice(deviceName))
        processes.push_back(process.pid);
    for (const auto& process : operations.hostChain(deviceName)) processes.push_back(process.pid);
    return EditorBridge::owner(processes, windows);
}

}  // namespace tallowbrook::host
