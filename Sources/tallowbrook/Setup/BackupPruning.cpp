#include "Setup/BackupPruning.h"

#include <algorithm>
#include <system_error>

#include "Integrations/IntegrationSetup.h"

namespace tallowbrook::host {
namespace {

constexpr std::size_t newestKept = 20;

}  // namespace

void pruneBackups(const std::filesystem::path& configFile, const std::filesystem::path& directory,
                  const std::filesystem::path& justMade) {
    std::error_code error;
    auto backups = IntegrationSetup::backups(configFile, directory);
    // What bears such a name and is no file was put there by somebody else.
    std::erase_if(backups, [&](const ConfigBackup& backup) {
        return !is_regular_file(symlink_status(backup.url, error));
    });
    // Names tell the second only, so of several in one second any may be listed first.
    const auto made = std::ranges::find(backups, justMade, &ConfigBackup::url);
    if (made != backups.end()) std::rotate(backups.begin(), made, made + 1);
    for (std::size_t i = newestKept; i + 1 < backups.size(); ++i)
        std::filesystem::remove(backups[i].url, error);
}

}  // namespace tallowbrook::host
