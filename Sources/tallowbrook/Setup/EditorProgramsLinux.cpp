#include "Setup/EditorPrograms.h"

namespace tallowbrook::host {

std::vector<std::filesystem::path> editorProgramPlaces(const EditorApp&,
                                                       std::string_view programName,
                                                       const std::filesystem::path&) {
    // What the editors' own packages install, each below a folder of the program's name.
    const auto name = std::filesystem::path{programName};
    return {std::filesystem::path{"/usr/share"} / name / "bin" / name,
            std::filesystem::path{"/opt"} / name / "bin" / name,
            std::filesystem::path{"/snap/bin"} / name};
}

}  // namespace tallowbrook::host
