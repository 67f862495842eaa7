#include "Setup/AgentBackups.h"

#include <algorithm>
#include <functional>
#include <tuple>

#include "Integrations/HookConfigMerger.h"

namespace tallowbrook::host {
namespace {

std::filesystem::file_time_type writtenAt(const std::filesystem::path& file) {
    std::error_code error;
    const auto time = std::filesystem::last_write_time(file, error);
    return error ? std::filesystem::file_time_type::min() : time;
}

AgentBackup::State stateOf(const std::optional<std::string>& text, const HookInstallSpec& spec) {
    if (!text) return AgentBackup::State::unreadable;
    const auto without = HookConfigMerger::uninstall(text, spec);
    if (!without) return AgentBackup::State::unreadable;
    return *without == text ? AgentBackup::State::beforeSetup : AgentBackup::State::setUp;
}

}  // namespace

std::vector<AgentBackup> backupsOf(const std::vector<Agent>& agents,
                                   const TallowbrookPaths& paths) {
    std::vector<AgentBackup> found;
    for (const auto& agent : agents) {
        const auto spec = IntegrationSetup::spec(agent.provider, paths.installedHelper().string());
        for (auto& backup :
             IntegrationSetup::backups(agent.configFile, agent.backupDirectory(paths))) {
            auto text = ConfigFileWriter::readText(backup.url).value_or(std::nullopt);
            const auto state = stateOf(text, spec);
            const auto time = writtenAt(backup.url);
            found.push_back({agent, std::move(backup), time, std::move(text), state});
        }
    }
    // Names tell the second only, and several changes may come within one.
    std::ranges::sort(found, std::ranges::greater{}, [](const AgentBackup& entry) {
        return std::tie(entry.backup.createdAt, entry.writtenAt, entry.backup.url);
    });
    return found;
}

}  // namespace tallowbrook::host
