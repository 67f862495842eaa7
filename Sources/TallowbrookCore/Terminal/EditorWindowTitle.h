// Finds the editor window that shows a folder by the titles of the windows, for editors whose
// extension tells nothing.
//
// Names and titles are UTF-8 and compared byte by byte. Pure functions; safe from any thread.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "System/UserHome.h"

namespace tallowbrook::EditorWindowTitle {

using Home = std::optional<std::filesystem::path>;

// The names under which an editor may show the folder: its own, then those of its ancestors below
// the file system's root and below the user's `home`, nearest first. The path is taken as written,
// less its "." and ".." parts; links are not followed. Empty for the root itself and for a path
// that is not absolute.
std::vector<std::string> candidateNames(const std::filesystem::path& folder,
                                        const Home& home = userHomeDirectory());

// Whether the title, or one of its parts between dashes (em dash or hyphen, with a blank on each
// side), is exactly the name. An empty name matches nothing.
bool matches(std::string_view title, std::string_view name);

// The first title that matches the folder's own name, else the first that matches the nearest
// ancestor's, and so on. Absent when none matches any.
std::optional<std::string> bestMatch(const std::vector<std::string>& titles,
                                     const std::filesystem::path& folder,
                                     const Home& home = userHomeDirectory());

}  // namespace tallowbrook::EditorWindowTitle
