// Keeps the backups of a configuration file from growing without end.
#pragma once

#include <filesystem>

namespace tallowbrook::host {

// Of the backups of this file, the newest 20 and the first stay: that one alone may hold the file
// as it was before tallowbrook. `justMade` stays too, also where the clock was set back and makes
// it look old. Removes nothing else from the directory, and does without what cannot be removed.
void pruneBackups(const std::filesystem::path& configFile, const std::filesystem::path& directory,
                  const std::filesystem::path& justMade);

}  // namespace tallowbrook::host
