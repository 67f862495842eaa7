#include "Setup/ProgramLocation.h"

namespace tallowbrook::host {

std::optional<std::filesystem::path> runningProgram() {
    std::error_code error;
    auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return std::nullopt;
    return program;
}

}  // namespace tallowbrook::host
