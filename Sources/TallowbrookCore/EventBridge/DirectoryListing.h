// What lies in a directory. Safe from any thread.
#pragma once

#include <filesystem>
#include <vector>

namespace tallowbrook {

// The entries of whatever kind, each as `directory` / its name, in the order in which the system
// gives them. Empty when they cannot all be listed.
std::vector<std::filesystem::path> listDirectory(const std::filesystem::path& directory);

}  // namespace tallowbrook
