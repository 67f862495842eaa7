#include "Watch/GitBranch.h"

#include <string_view>

#include "System/FileContents.h"

namespace tallowbrook::host {
namespace {

// Both files hold one short line.
constexpr std::size_t maxLength = 4096;

// What stands behind `prefix` on the one line of the file.
std::optional<std::string> lineBehind(std::string_view prefix, const std::filesystem::path& file) {
    const auto text = FileContents::read(file, maxLength);
    if (!text || !text->starts_with(prefix)) return std::nullopt;
    std::string line = text->substr(prefix.size());
    while (line.ends_with('\n') || line.ends_with('\r')) line.pop_back();
    if (line.empty() || line.find('\n') != std::string::npos) return std::nullopt;
    return line;
}

std::optional<std::filesystem::path> gitDirectory(std::filesystem::path directory) {
    while (true) {
        auto candidate = directory / ".git";
        std::error_code error;
        if (is_directory(candidate, error)) return candidate;
        if (is_regular_file(candidate, error)) {
            const auto elsewhere = lineBehind("gitdir: ", candidate);
            if (!elsewhere) return std::nullopt;
            return directory / *elsewhere;
        }
        if (directory == directory.parent_path()) return std::nullopt;
        directory = directory.parent_path();
    }
}

}  // namespace

std::optional<std::string> gitBranch(const std::filesystem::path& directory) {
    if (!directory.is_absolute()) return std::nullopt;
    const auto git = gitDirectory(directory);
    if (!git) return std::nullopt;
    auto branch = lineBehind("ref: refs/heads/", *git / "HEAD");
    // What stands there where the branches are kept in another form than files.
    if (branch == ".invalid") return std::nullopt;
    return branch;
}

}  // namespace tallowbrook::host
