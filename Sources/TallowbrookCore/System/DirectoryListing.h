// What lies in a directory. Safe from any thread.
#pragma once

#include <expected>
#include <filesystem>
#include <vector>

#include "System/FileError.h"

namespace tallowbrook {

// The entries of whatever kind, each as `directory` / its name, in the order in which the system
// gives them. Fails with step "list" when they cannot all be listed.
[[nodiscard]] std::expected<std::vector<std::filesystem::path>, FileError> entriesOf(
    const std::filesystem::path& directory);

// What `entriesOf` gives; empty where it fails.
std::vector<std::filesystem::path> listDirectory(const std::filesystem::path& directory);

}  // namespace tallowbrook
