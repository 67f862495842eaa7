#include "Integrations/IntegrationSetup.h"

#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <map>

#include "Domain/RecordCoding.h"
#include "Domain/UUID.h"
#include "EventBridge/DirectoryOnDisk.h"
#include "Integrations/HookConfigMerger.h"
#include "System/DirectoryListing.h"
#include "System/FileContents.h"
#include "System/ReplacementFile.h"

namespace tallowbrook {
namespace {

using std::filesystem::path;

constexpr mode_t helperMode = 0700;
constexpr std::string_view backupSuffix = ".bak";

bool isThere(const path& location) {
    struct stat status{};
    return stat(location.c_str(), &status) == 0;
}

bool contentsEqual(const path& one, const path& other) {
    const auto first = FileContents::read(one);
    const auto second = FileContents::read(other);
    return first && second && *first == *second;
}

// The location as the file's own directory entry.
path resolved(const path& location) {
    return ConfigFileWriter::resolve(location).value_or(location);
}

std::expected<void, FileError> installBytes(std::string_view bytes, const path& destination) {
    const auto uuid = randomUUID();
    if (!uuid) return std::unexpected(uuid.error());
    auto file = ReplacementFile::create(destination.parent_path() /
                                        (".tallowbrook-hook." + UUIDText::text(*uuid)));
    if (!file) return std::unexpected(file.error());
    if (auto done = file->write(bytes); !done) return done;
    if (auto done = file->setMode(helperMode); !done) return done;
    // After a power failure the agents would call an empty helper.
    if (auto done = file->sync(); !done) return done;
    return file->replace(destination);
}

ConfigFileWriter::Transform alwaysGiving(std::string text) {
    return [text = std::move(text)](const std::optional<std::string>&) { return text; };
}

// The time in the name of a backup of the file `name`; absent for any other name.
std::optional<Instant> backupTime(std::string_view entry, const std::string& name) {
    const std::string prefix = name + ".";
    if (!entry.starts_with(prefix) || !entry.ends_with(backupSuffix)) return std::nullopt;
    // "settings.json.bak" has the prefix and the suffix one over the other.
    if (entry.size() < prefix.size() + backupSuffix.size()) return std::nullopt;
    entry.remove_prefix(prefix.size());
    entry.remove_suffix(backupSuffix.size());
    return IntegrationSetup::parseStamp(entry.substr(0, entry.find('.')));
}

}  // namespace

IntegrationSetupError IntegrationSetupError::helperSourceMissing(const path& path) {
    return {HelperSourceMissing{path.string()}};
}

IntegrationSetupError IntegrationSetupError::helperInstallFailed(std::string reason) {
    return {HelperInstallFailed{std::move(reason)}};
}

IntegrationSetupError IntegrationSetupError::backupMissing(const path& path) {
    return {BackupMissing{path.string()}};
}

std::string IntegrationSetupError::description() const {
    struct Text {
        std::string operator()(const HelperSourceMissing& error) const {
            return "The helper to copy was not found at " + error.path;
        }
        std::string operator()(const HelperInstallFailed& error) const {
            return "Could not install the helper: " + error.reason;
        }
        std::string operator()(const BackupMissing& error) const {
            return "The backup " + error.path + " no longer exists.";
        }
    };
    return std::visit(Text{}, reason);
}

std::string RestorePlanError::description() const {
    return std::visit([](const auto& error) { return error.description(); }, reason);
}

HookInstallSpec IntegrationSetup::spec(Provider provider, std::string_view helperPath) {
    return HookInstallSpec::of(provider, helperPath);
}

HelperStatus IntegrationSetup::helperStatus(const path& installed, const path& bundled) {
    if (!isThere(installed)) return HelperStatus::missing;
    // Asked before the contents: agents cannot run even the right bytes.
    if (access(installed.c_str(), X_OK) != 0) return HelperStatus::notExecutable;
    return contentsEqual(installed, bundled) ? HelperStatus::current : HelperStatus::outdated;
}

std::expected<path, IntegrationSetupError> IntegrationSetup::installHelper(
    const path& source, const TallowbrookPaths& paths) {
    const auto bytes = FileContents::read(source);
    if (!bytes) return std::unexpected(IntegrationSetupError::helperSourceMissing(source));
    const auto failure = [](const FileError& error) {
        return std::unexpected(IntegrationSetupError::helperInstallFailed(error.reason()));
    };
    if (auto made = ensureDirectoryOnDisk(paths.binDirectory()); !made)
        return failure(made.error());
    if (auto done = installBytes(*bytes, paths.installedHelper()); !done)
        return failure(done.error());
    return paths.installedHelper();
}

std::expected<ConfigChangePlan, ConfigPlanError> IntegrationSetup::planInstall(
    Provider provider, const path& configURL, std::string_view helperPath) {
    const auto wanted = spec(provider, helperPath);
    return ConfigFileWriter::plan(configURL, [&](const std::optional<std::string>& text) {
        return HookConfigMerger::install(text, wanted);
    });
}

std::expected<ConfigChangePlan, ConfigPlanError> IntegrationSetup::planUninstall(
    Provider provider, const path& configURL, std::string_view helperPath) {
    const auto unwanted = spec(provider, helperPath);
    return ConfigFileWriter::plan(configURL, [&](const std::optional<std::string>& text) {
        return HookConfigMerger::uninstall(text, unwanted);
    });
}

std::expected<ConfigChangePlan, RestorePlanError> IntegrationSetup::planRestore(
    const ConfigBackup& backup, const path& configURL) {
    const auto text = ConfigFileWriter::readText(backup.url);
    if (!text) return std::unexpected(RestorePlanError{text.error()});
    if (!*text)
        return std::unexpected(RestorePlanError{IntegrationSetupError::backupMissing(backup.url)});
    auto plan = ConfigFileWriter::plan(resolved(configURL), alwaysGiving(**text));
    if (plan) return std::move(*plan);
    // The transform cannot fail, so it is the file.
    return std::unexpected(
        RestorePlanError{std::get<ConfigFileError>(std::move(plan.error().reason))});
}

std::vector<ConfigBackup> IntegrationSetup::backups(const path& configURL, const path& directory) {
    const auto name = resolved(configURL).filename().string();
    // Equal times stay in the order of the directory.
    std::multimap<Instant, path, std::greater<>> newestFirst;
    for (const auto& file : listDirectory(directory))
        if (const auto time = backupTime(file.filename().string(), name))
            newestFirst.emplace(*time, file);
    std::vector<ConfigBackup> backups;
    for (const auto& [time, url] : newestFirst) backups.push_back({url, time});
    return backups;
}

std::optional<Instant> IntegrationSetup::parseStamp(std::string_view text) {
    // With dashes and colons in their places it is an event date without a fraction.
    constexpr std::string_view pattern = "00000000T000000Z";
    if (text.size() != pattern.size()) return std::nullopt;
    std::string date{text};
    for (const std::size_t dash : {4u, 7u}) date.insert(dash, "-");
    for (const std::size_t colon : {13u, 16u}) date.insert(colon, ":");
    return EventDate::parse(date);
}

std::vector<std::string> IntegrationSetup::testEventArguments(Provider provider) {
    return {std::string{hookSourceWord(provider)}, "--test"};
}

std::string IntegrationSetup::testEventPayload(Provider, std::string_view sessionID,
                                               std::string_view cwd) {
    RecordEncoder payload;
    payload.encode("hook_event_name", "SessionStart");
    payload.encode("session_id", sessionID);
    payload.encode("cwd", cwd);
    payload.encode("source", "setup-check");
    return payload.text();
}

}  // namespace tallowbrook
