#include "Focus/EditorOfSession.h"

#include <algorithm>
#include <array>

namespace tallowbrook::host {
namespace {

// In the order of `EditorBridge::editors`.
struct ProgramNames {
    std::string_view onLinux;
    // Of the processes on macOS, which bear the application's name and then their own.
    std::string_view beginningOnMac;
};
constexpr std::array<ProgramNames, EditorBridge::editors.size()> programs{{
    {"code", "Code Helper"},
    {"code-insiders", "Code - Insiders"},
    {"cursor", "Cursor"},
    {"windsurf", "Windsurf"},
    {"codium", "VSCodium"},
}};

}  // namespace

const EditorApp* editorOfProgram(std::string_view name) {
    for (std::size_t i = 0; i < programs.size(); ++i)
        if (name == programs[i].onLinux || name.starts_with(programs[i].beginningOnMac))
            return &EditorBridge::editors[i];
    return nullptr;
}

const EditorApp* editorOf(const SessionSnapshot& session, const FocusOperations& operations) {
    for (const auto& program : programsAbove(session, operations))
        if (const auto* editor = editorOfProgram(program)) return editor;
    return nullptr;
}

}  // namespace tallowbrook::host
