#include "Setup/BackupPruning.h"

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
    for (std::size_t i = newestKept; i + 1 < backups.size(); ++i)
        if (backups[i].url != justMade) std::filesystem::remove(backups[i].url, error);
}

}  // namespace tallowbrook::host
