#include <mach-o/dyld.h>

#include <array>
#include <climits>
#include <cstdint>

#include "Setup/ProgramLocation.h"

namespace tallowbrook::host {

std::optional<std::filesystem::path> runningProgram() {
    std::array<char, PATH_MAX> buffer{};
    auto size = static_cast<std::uint32_t>(buffer.size());
    if (_NSGetExecutablePath(buffer.data(), &size) != 0) return std::nullopt;
    std::error_code error;
    // The system gives the path by which the program was started, links and dots included.
    auto program = std::filesystem::canonical(buffer.data(), error);
    if (error) return std::nullopt;
    return program;
}

}  // namespace tallowbrook::host
