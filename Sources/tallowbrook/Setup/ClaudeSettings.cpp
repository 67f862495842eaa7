#include "Setup/ClaudeSettings.h"

#include <fmt/core.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "Integrations/ConfigFileWriter.h"
#include "Integrations/OrderedJSON.h"

namespace tallowbrook::host {
namespace {

// A setting and the file that has the last word on it.
struct Setting {
    JSONNode value;
    std::filesystem::path file;
};

std::optional<Setting> settingIn(const std::filesystem::path& file, std::string_view name) {
    const auto text = ConfigFileWriter::readText(file);
    if (!text || !*text) return std::nullopt;
    const auto root = OrderedJSON::parse(**text);
    const auto* members = root ? root->objectMembers() : nullptr;
    const auto* found = members ? value(*members, name) : nullptr;
    return found ? std::optional{Setting{*found, file}} : std::nullopt;
}

std::vector<std::filesystem::path> filesOf(const std::filesystem::path& managedDirectory) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator entry{managedDirectory / "managed-settings.d", error};
         !error && entry != std::filesystem::directory_iterator{}; entry.increment(error))
        if (entry->path().extension() == ".json") files.push_back(entry->path());
    std::ranges::sort(files);
    files.insert(files.begin(), managedDirectory / "managed-settings.json");
    return files;
}

std::optional<Setting> lastSettingIn(const std::vector<std::filesystem::path>& files,
                                     std::string_view name) {
    std::optional<Setting> last;
    for (const auto& file : files)
        if (auto setting = settingIn(file, name)) last = std::move(setting);
    return last;
}

bool isTrue(const Setting& setting) { return setting.value == JSONNode::bool_(true); }

// Either all that can be customised, or a list that names hooks.
bool includesHooks(const Setting& setting) {
    const auto* names = setting.value.arrayElements();
    if (!names) return isTrue(setting);
    return std::ranges::any_of(*names, [](const JSONNode& name) {
        const auto* text = name.stringValue();
        return text && *text == "hooks";
    });
}

HookObstacle set(std::string_view name, const Setting& setting, std::string cure) {
    return {HookObstacle::Kind::switchedOff,
            fmt::format("\"{}\" is set in {}", name, setting.file.string()), std::move(cure)};
}

}  // namespace

std::optional<HookObstacle> obstacleInClaudeSettings(
    const std::filesystem::path& settingsFile, const std::filesystem::path& managedDirectory) {
    const auto managedFiles = filesOf(managedDirectory);
    const std::string askManager = "only those who manage this machine can change that";
    for (const std::string_view name : {"allowManagedHooksOnly", "strictPluginOnlyCustomization"})
        if (const auto managed = lastSettingIn(managedFiles, name);
            managed && includesHooks(*managed))
            return set(name, *managed, askManager);

    constexpr std::string_view disabling = "disableAllHooks";
    if (const auto managed = lastSettingIn(managedFiles, disabling))
        return isTrue(*managed) ? std::optional{set(disabling, *managed, askManager)}
                                : std::nullopt;
    const auto own = settingIn(settingsFile, disabling);
    if (!own || !isTrue(*own)) return std::nullopt;
    return set(disabling, *own, "take it out there, or nothing will be reported");
}

}  // namespace tallowbrook::host
