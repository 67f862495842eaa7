#include "Focus/EditorOfSession.h"

#include <gtest/gtest.h>

namespace tallowbrook::host {
namespace {

TEST(EditorOfSession, isToldByTheNamesOfItsProcesses) {
    struct Row {
        std::string_view program;
        std::string_view editor;
    };
    for (const auto& [program, editor] : {
             Row{"code", "VS Code"},
             Row{"Code Helper (Plu", "VS Code"},
             Row{"code-insiders", "VS Code Insiders"},
             Row{"Code - Insiders ", "VS Code Insiders"},
             Row{"Cursor Helper", "Cursor"},
             Row{"windsurf", "Windsurf"},
             Row{"codium", "VSCodium"},
         }) {
        const auto* found = editorOfProgram(program);
        ASSERT_NE(found, nullptr) << program;
        EXPECT_EQ(found->name, editor);
    }
    for (const auto* program : {"", "codex", "node", "tmux: server", "Code"})
        EXPECT_EQ(editorOfProgram(program), nullptr) << program;
}

}  // namespace
}  // namespace tallowbrook::host
