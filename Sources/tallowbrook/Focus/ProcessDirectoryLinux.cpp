#include <filesystem>

#include "Focus/ProcessDirectory.h"

namespace tallowbrook::host {

std::optional<std::string> directoryOfProcess(pid_t pid) {
    std::error_code error;
    const auto directory =
        std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/cwd", error);
    if (error) return std::nullopt;
    return directory.string();
}

}  // namespace tallowbrook::host
