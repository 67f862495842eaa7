#include "Setup/ProgramLocation.h"

namespace tallowbrook::host {

std::optional<std::filesystem::path> bundledHelper() {
    const auto program = runningProgram();
    if (!program) return std::nullopt;
    const auto directory = program->parent_path();
    // A package keeps a program that no user starts in libexec.
    for (const auto& place : {directory, directory.parent_path() / "libexec" / "tallowbrook"}) {
        auto helper = place / "tallowbrook-hook";
        std::error_code error;
        if (std::filesystem::is_regular_file(helper, error)) return helper;
    }
    return std::nullopt;
}

}  // namespace tallowbrook::host
