// The editors whose integrated terminals can be found and revealed, by an extension inside them.
//
// Plain values; safe from any thread.
#pragma once

#include <array>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>

namespace tallowbrook {

struct EditorApp {
    std::string_view name;  // as the user knows it
    std::string_view bundleIdentifier;
    std::string_view urlScheme;
    std::string_view extensionsFolder;  // below the user's home
    bool operator==(const EditorApp&) const = default;

    // The extension's page inside the editor: "vscode:extension/tallowbrook.tallowbrook".
    std::string extensionPageURL() const;

    // Whether the extension is installed, of whatever version, for the user with this home. False
    // also when the extensions cannot be listed.
    bool hasExtension(const std::filesystem::path& home) const;
};

namespace EditorBridge {

inline constexpr std::string_view extensionID = "tallowbrook.tallowbrook";

inline constexpr std::array editors{
    EditorApp{"VS Code", "com.microsoft.VSCode", "vscode", ".vscode/extensions"},
    EditorApp{"VS Code Insiders", "com.microsoft.VSCodeInsiders", "vscode-insiders",
              ".vscode-insiders/extensions"},
    EditorApp{"Cursor", "com.todesktop.230313mzl4w4u92", "cursor", ".cursor/extensions"},
    EditorApp{"Windsurf", "com.exafunction.windsurf", "windsurf", ".windsurf/extensions"},
    EditorApp{"VSCodium", "com.vscodium", "vscodium", ".vscode-oss/extensions"},
};

// Those of all `editors`.
std::set<std::string_view> bundleIdentifiers();

}  // namespace EditorBridge
}  // namespace tallowbrook
