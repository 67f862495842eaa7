#include "System/SearchPath.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "Text/TakeUntil.h"

namespace tallowbrook {

std::vector<std::string> SearchPath::directories() {
    const char* variable = std::getenv("PATH");
    std::string_view rest = variable == nullptr ? std::string_view{} : variable;
    std::vector<std::string> directories;
    while (!rest.empty()) {
        const auto directory = takeUntil(rest, ':');
        if (!directory.empty()) directories.emplace_back(directory);
    }
    return directories;
}

bool SearchPath::isExecutableFile(const std::string& path) {
    // A directory passes the test of access(2), too.
    struct stat status{};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           access(path.c_str(), X_OK) == 0;
}

std::optional<std::string> SearchPath::find(std::string_view name) {
    for (const auto& directory : directories()) {
        if (!directory.starts_with('/')) continue;
        auto path = directory + "/" + std::string{name};
        if (isExecutableFile(path)) return path;
    }
    return std::nullopt;
}

}  // namespace tallowbrook
