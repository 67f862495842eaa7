#include "Setup/EditorPrograms.h"

#include <algorithm>

#include "EventIngestion/PayloadNormalizer.h"
#include "System/DirectoryListing.h"
#include "System/SearchPath.h"

namespace tallowbrook::host {
namespace {

// In the order of `EditorBridge::editors`.
constexpr std::array<std::string_view, EditorBridge::editors.size()> programNames{
    "code", "code-insiders", "cursor", "windsurf", "codium"};

std::optional<std::string> findProgram(const EditorApp& editor, std::string_view name,
                                       const std::filesystem::path& userHome) {
    // The known places come first: on PATH an editor may bear a relative's name.
    for (const auto& place : editorProgramPlaces(editor, name, userHome))
        if (SearchPath::isExecutableFile(place.string())) return place.string();
    return SearchPath::find(name);
}

}  // namespace

std::vector<std::string> EditorProgram::installation(const std::filesystem::path& package) const {
    // By force, since another build may bear the same version.
    return {"--install-extension", package.string(), "--force"};
}

std::vector<std::string> EditorProgram::removal() const {
    return {"--uninstall-extension", std::string{EditorBridge::extensionID}};
}

std::vector<EditorProgram> editorPrograms(const std::filesystem::path& userHome) {
    std::vector<EditorProgram> found;
    for (std::size_t i = 0; i < programNames.size(); ++i) {
        const auto& editor = EditorBridge::editors[i];
        if (auto path = findProgram(editor, programNames[i], userHome))
            found.push_back({&editor, std::move(*path)});
    }
    return found;
}

std::string editorProgramNames() {
    std::string text;
    for (const auto name : programNames) text.append(text.empty() ? "" : ", ").append(name);
    return text;
}

bool hasCurrentExtension(const EditorApp& editor, const std::filesystem::path& userHome) {
    const auto name = std::string{EditorBridge::extensionID} + "-" +
                      std::string{PayloadNormalizer::adapterVersion};
    const auto folders = listDirectory(userHome / editor.extensionsFolder);
    return std::ranges::any_of(folders,
                               [&](const auto& folder) { return folder.filename() == name; });
}

}  // namespace tallowbrook::host
