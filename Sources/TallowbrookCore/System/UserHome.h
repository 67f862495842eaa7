// The home directory of the user this process runs as.
#pragma once

#include <filesystem>
#include <optional>

namespace tallowbrook {

// `$HOME` where it is absolute, else the entry of the user's account; absent where neither is
// known. Reads the environment: not while another thread changes it.
std::optional<std::filesystem::path> userHomeDirectory();

// The entry of the user's account alone. One implementation per system.
std::optional<std::filesystem::path> accountHomeDirectory();

}  // namespace tallowbrook
