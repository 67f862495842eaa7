#include "Setup/ProgramLocation.h"

namespace tallowbrook::host {

std::optional<std::filesystem::path> runningProgram() {
    std::error_code error;
    // proc(5): of a program that was replaced meanwhile the name ends in " (deleted)", but its
    // directory is still right.
    auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return std::nullopt;
    return program;
}

}  // namespace tallowbrook::host
