// The editors of this machine and their command lines, by which an extension comes and goes.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Integrations/ProcessRunner.h"
#include "Output/Sentence.h"
#include "Terminal/EditorApp.h"

namespace tallowbrook::host {

// What is asked of the machine.
struct EditorOperations {
    // Runs a program to its end, within two minutes; absent when it cannot be run or does not end.
    std::function<std::optional<ProcessRunner::Result>(const std::string& path,
                                                       const std::vector<std::string>& arguments)>
        run;
    std::filesystem::path userHome;
};

struct EditorProgram {
    const EditorApp* editor = nullptr;  // of `EditorBridge::editors`
    std::string path;                   // of its command line

    std::vector<std::string> installation(const std::filesystem::path& package) const;
    std::vector<std::string> removal() const;
};

// The editors whose command lines are there, in the order of `EditorBridge::editors`: where their
// installers put it, else on PATH. Reads the environment.
std::vector<EditorProgram> editorPrograms(const std::filesystem::path& userHome);

// "code, code-insiders, …": the names by which the command lines are looked for on PATH.
std::string editorProgramNames();

// Where the installers of an editor put its command line. One implementation per system.
std::vector<std::filesystem::path> editorProgramPlaces(const EditorApp& editor,
                                                       std::string_view programName,
                                                       const std::filesystem::path& userHome);

// Whether this editor has the extension in this version.
bool hasCurrentExtension(const EditorApp& editor, const std::filesystem::path& userHome);

}  // namespace tallowbrook::host
