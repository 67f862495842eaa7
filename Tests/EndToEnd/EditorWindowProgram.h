// A window of an editor with the extension in it, run by node without an editor around it.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "RunProgram.h"
#include "Support/BuildPaths.h"
#include "System/SearchPath.h"

namespace tallowbrook {

struct EditorWindowProgram {
    // Why there can be no window; empty where there can.
    static std::string obstacle() {
        if (!SearchPath::find("node")) return "node is not installed";
        if (!std::filesystem::exists(script())) return "script/build-editor has built nothing";
        return "";
    }

    // Opens a window with a terminal for each shell, and waits until it is there. It is closed with
    // its standard input.
    EditorWindowProgram(const Environment& environment, const std::vector<pid_t>& shells)
        : program{call(environment, shells)} {
        EXPECT_TRUE(program.waitForOutput("open\n"));
    }

    RunningProgram program;

 private:
    static std::filesystem::path script() {
        return std::filesystem::path{BuildPaths::editorBundles} / "test" / "editorWindow.js";
    }

    static ProgramCall call(const Environment& environment, const std::vector<pid_t>& shells) {
        ProgramCall call{.program = SearchPath::find("node").value_or(""),
                         .arguments = {script(), std::filesystem::path{BuildPaths::editorBundles} /
                                                     "extension.js"},
                         .inputStaysOpen = true,
                         .environment = environment};
        for (const pid_t shell : shells) call.arguments.push_back(std::to_string(shell));
        return call;
    }
};

}  // namespace tallowbrook
