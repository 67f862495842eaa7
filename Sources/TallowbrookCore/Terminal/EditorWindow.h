// What the extension publishes of one editor window, and its JSON form (RFC 8259): members named
// after the fields, an absent optional field left out.
//
// Plain values and pure functions; safe from any thread.
#pragma once

#include <sys/types.h>

#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Domain/RecordCoding.h"

namespace tallowbrook {

struct EditorWindow {
    pid_t hostPid = 0;                     // the editor's process that owns the window
    std::string appName;                   // the editor's name for itself
    std::optional<std::string> workspace;  // the path of the workspace file, where one is open
    std::vector<std::string> folders;      // the paths of the folders in the workspace
    std::vector<pid_t> shellPids;          // the shells in the window's terminals
    bool operator==(const EditorWindow&) const = default;

    // The path by which the editor opens this window again; absent for a window with no folder, or
    // with several that no workspace file holds together.
    std::optional<std::string> openTarget() const;
};

namespace EditorWindowCoding {

// One line of compact JSON without a line feed. The texts must be valid UTF-8.
std::string encode(const EditorWindow& window);

// Every field but `workspace` must be there with the right type; `workspace` may be missing or
// null. Unknown members are passed over.
[[nodiscard]] std::expected<EditorWindow, DecodingError> decode(std::string_view text);

}  // namespace EditorWindowCoding
}  // namespace tallowbrook
