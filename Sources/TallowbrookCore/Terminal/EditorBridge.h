// Finds the editor window whose integrated terminal runs an agent, and asks for that terminal to be
// revealed.
//
// The extension in each editor shares two directories with us: it publishes its windows in
// `TallowbrookPaths::editorsDirectory`, and watches `editorRequestsDirectory` for requests. Nothing
// is kept between calls; safe from any thread and any number of processes.
#pragma once

#include <sys/types.h>

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

#include "Domain/Instant.h"
#include "System/FileError.h"
#include "Terminal/EditorApp.h"
#include "Terminal/EditorWindow.h"

namespace tallowbrook::EditorBridge {

// A request that was not taken for longer must not act any more.
inline constexpr Seconds requestLifetime{10.0};

// Whether there is such a process, of whatever user; false below 2. A process that has exited
// counts until its parent has waited for it.
bool processIsRunning(pid_t pid);

// The windows published in a directory, in the order of its listing, of the editors that still run.
// Files that are no window record, or have more than 1 MiB, are passed over. Empty when the
// directory cannot be listed.
std::vector<EditorWindow> windows(const std::filesystem::path& directory,
                                  const std::function<bool(pid_t)>& isRunning = processIsRunning);

struct Owner {
    EditorWindow window;
    pid_t shellPid = 0;
    bool operator==(const Owner&) const = default;
};

// The first window, and in it the first shell, that is among `processes`: those of an agent and its
// ancestors, in any order.
std::optional<Owner> owner(const std::vector<pid_t>& processes,
                           const std::vector<EditorWindow>& windows);

// Asks the editor with this shell to reveal its terminal, by a new file in `directory`, which is
// made where it is missing. An extension sees the whole file or none. Expired requests are removed
// first. Gives the file, which an extension that takes the request removes. Fails when the
// directory or the file cannot be made; then no request is there.
[[nodiscard]] std::expected<std::filesystem::path, FileError> requestTerminal(
    pid_t shellPid, const std::filesystem::path& directory, Instant now);

// Removes the requests in `directory` last written more than `requestLifetime` before `now`, also
// those that were never finished. Never for the directory of the window records, which look like
// requests.
void removeExpiredRequests(const std::filesystem::path& directory, Instant now);

}  // namespace tallowbrook::EditorBridge
