// Setting up an agent: the helper in its place, plans for the agent's configuration file, the
// backups that applied plans left, and the event that proves the wiring.
//
// Plans change nothing until `ConfigFileWriter::apply`. One installation at a time is safe beside
// any number of running helpers.
#pragma once

#include <array>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Domain/AgentEvent.h"
#include "Domain/Instant.h"
#include "EventBridge/TallowbrookPaths.h"
#include "Integrations/ConfigFileWriter.h"
#include "Integrations/HookInstallSpec.h"

namespace tallowbrook {

enum class HelperStatus { current, missing, outdated, notExecutable };
inline constexpr std::array helperStatusNames{
    std::pair{HelperStatus::current, std::string_view{"current"}},
    std::pair{HelperStatus::missing, std::string_view{"missing"}},
    std::pair{HelperStatus::outdated, std::string_view{"outdated"}},
    std::pair{HelperStatus::notExecutable, std::string_view{"notExecutable"}},
};
constexpr const auto& namesOf(HelperStatus) { return helperStatusNames; }

struct ConfigBackup {
    std::filesystem::path url;
    Instant createdAt{};  // to the second, from the name
    bool operator==(const ConfigBackup&) const = default;
};

struct IntegrationSetupError {
    struct HelperSourceMissing {
        std::string path;
        bool operator==(const HelperSourceMissing&) const = default;
    };
    struct HelperInstallFailed {
        std::string reason;
        bool operator==(const HelperInstallFailed&) const = default;
    };
    struct BackupMissing {
        std::string path;
        bool operator==(const BackupMissing&) const = default;
    };
    std::variant<HelperSourceMissing, HelperInstallFailed, BackupMissing> reason;
    bool operator==(const IntegrationSetupError&) const = default;

    static IntegrationSetupError helperSourceMissing(const std::filesystem::path& path);
    static IntegrationSetupError helperInstallFailed(std::string reason);
    static IntegrationSetupError backupMissing(const std::filesystem::path& path);

    // A sentence for the user.
    std::string description() const;
};

// What keeps a restoration from being planned.
struct RestorePlanError {
    std::variant<IntegrationSetupError, ConfigFileError> reason;
    bool operator==(const RestorePlanError&) const = default;

    std::string description() const;
};

namespace IntegrationSetup {

HookInstallSpec spec(Provider provider, std::string_view helperPath);

// Compares byte for byte: a newer helper is as outdated as an older one.
HelperStatus helperStatus(const std::filesystem::path& installed,
                          const std::filesystem::path& bundled);

// Copies the helper to `paths.installedHelper()` with mode 0700 and gives that location. It comes
// into place by a rename, so one that runs is never seen half-written, and a failure leaves the
// old one as it was.
[[nodiscard]] std::expected<std::filesystem::path, IntegrationSetupError> installHelper(
    const std::filesystem::path& source, const TallowbrookPaths& paths);

// Plans to put the provider's hook entries into its configuration file, in place of any that call
// the helper otherwise, and to take all of them out. `helperPath` is the installed helper's
// location. They fail as `ConfigFileWriter::plan` and `HookConfigMerger` do; a file that needs no
// change, or is not there to take anything out of, gives a plan that does nothing.
[[nodiscard]] std::expected<ConfigChangePlan, ConfigPlanError> planInstall(
    Provider provider, const std::filesystem::path& configURL, std::string_view helperPath);
[[nodiscard]] std::expected<ConfigChangePlan, ConfigPlanError> planUninstall(
    Provider provider, const std::filesystem::path& configURL, std::string_view helperPath);

// A plan to write what the backup holds, whatever the file holds now. Its `fileURL` is what
// `configURL` leads to where that is a symbolic link.
[[nodiscard]] std::expected<ConfigChangePlan, RestorePlanError> planRestore(
    const ConfigBackup& backup, const std::filesystem::path& configURL);

// The backups of a file of this name, newest first. Empty where the directory cannot be read.
std::vector<ConfigBackup> backups(const std::filesystem::path& configURL,
                                  const std::filesystem::path& directory);

// Reads what `ConfigFileWriter::backupStamp` writes, and nothing else.
std::optional<Instant> parseStamp(std::string_view text);

// The helper's arguments for a test event.
std::vector<std::string> testEventArguments(Provider provider);

// A session start, as a JSON object. `cwd` must be valid UTF-8; an id that begins with
// `setupCheckPrefix` keeps the session out of the user's sight.
std::string testEventPayload(Provider provider, std::string_view sessionID, std::string_view cwd);

}  // namespace IntegrationSetup
}  // namespace tallowbrook
