// The directories of PATH, and the programs in them.
//
// Reads the environment: not while another thread changes it. Nothing here fails: what is not there
// is absent.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallowbrook::SearchPath {

// As they stand there, without empty ones; none when PATH is unset.
std::vector<std::string> directories();

// Whether there is a regular file at this path, or behind it, that the user may run.
bool isExecutableFile(const std::string& path);

// The first executable file of this name. Relative directories are left out: what they hold depends
// on where the user stands.
std::optional<std::string> find(std::string_view name);

}  // namespace tallowbrook::SearchPath
