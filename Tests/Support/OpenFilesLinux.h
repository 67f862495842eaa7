// The files that another process has open, see proc(5).
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace tallowbrook {

inline bool hasOpen(pid_t process, const std::filesystem::path& file) {
    std::error_code error;
    const auto wanted = std::filesystem::canonical(file, error);
    const std::filesystem::path descriptors{"/proc/" + std::to_string(process) + "/fd"};
    std::filesystem::directory_iterator entries{descriptors, error};
    for (; !error && entries != std::filesystem::directory_iterator{}; entries.increment(error)) {
        std::error_code closed;
        if (std::filesystem::read_symlink(entries->path(), closed) == wanted) return true;
    }
    return false;
}

}  // namespace tallowbrook
