// Where the running program lies. One implementation per system.
#pragma once

#include <filesystem>
#include <optional>

namespace tallowbrook::host {

// The executable of this process, with links followed; absent where the system does not tell.
std::optional<std::filesystem::path> runningProgram();

// The helper that came with the running program: beside it, else in ../libexec/tallowbrook/.
std::optional<std::filesystem::path> bundledHelper();

// The editors' extension that came with it: beside it, else in ../share/tallowbrook/.
std::optional<std::filesystem::path> bundledExtension();

}  // namespace tallowbrook::host
