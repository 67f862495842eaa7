#include "Setup/EditorPrograms.h"

namespace tallowbrook::host {
namespace {

std::string applicationName(const EditorApp& editor) {
    if (editor.name == "VS Code") return "Visual Studio Code.app";
    if (editor.name == "VS Code Insiders") return "Visual Studio Code - Insiders.app";
    return std::string{editor.name} + ".app";
}

}  // namespace

std::vector<std::filesystem::path> editorProgramPlaces(const EditorApp& editor,
                                                       std::string_view programName,
                                                       const std::filesystem::path& userHome) {
    std::vector<std::filesystem::path> places;
    for (const auto& applications :
         {std::filesystem::path{"/Applications"}, userHome / "Applications"}) {
        const auto programs =
            applications / applicationName(editor) / "Contents" / "Resources" / "app" / "bin";
        // Some keep the name of the editor that they come from.
        for (const auto& name : {std::string{programName}, std::string{"code"}})
            places.push_back(programs / name);
    }
    return places;
}

}  // namespace tallowbrook::host
