#include "Setup/ProgramLocation.h"

namespace tallowbrook::host {
namespace {

// Beside the running program, else where a package keeps it, by its place below the prefix.
std::optional<std::filesystem::path> bundled(const char* name, const char* placeInPackage) {
    const auto program = runningProgram();
    if (!program) return std::nullopt;
    const auto directory = program->parent_path();
    for (const auto& place : {directory, directory.parent_path() / placeInPackage}) {
        auto file = place / name;
        std::error_code error;
        if (std::filesystem::is_regular_file(file, error)) return file;
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::filesystem::path> bundledHelper() {
    // No user starts it.
    return bundled("tallowbrook-hook", "libexec/tallowbrook");
}

std::optional<std::filesystem::path> bundledExtension() {
    return bundled("tallowbrook.vsix", "share/tallowbrook");
}

}  // namespace tallowbrook::host
