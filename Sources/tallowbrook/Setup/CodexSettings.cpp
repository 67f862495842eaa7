#include "Setup/CodexSettings.h"

#include <fmt/core.h>
#include <toml++/toml.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "Integrations/ConfigFileWriter.h"
#include "Integrations/HookConfigStructure.h"
#include "Integrations/HookHandler.h"

namespace tallowbrook::host {
namespace {

using Kind = HookObstacle::Kind;

const std::string askManager = "only those who manage this machine can change that";

// Empty where the file is missing or is no TOML.
toml::table read(const std::filesystem::path& file) {
    const auto text = ConfigFileWriter::readText(file);
    if (!text || !*text) return {};
    try {
        return toml::parse(**text);
    } catch (const toml::parse_error&) {
        return {};
    }
}

// The newer name has the last word.
std::optional<bool> hooksFeature(const toml::table& settings, std::string_view table = "features") {
    for (const char* name : {"hooks", "codex_hooks"})
        if (const auto value = settings[table][name].value_exact<bool>()) return value;
    return std::nullopt;
}

std::optional<HookObstacle> forbidden(const std::filesystem::path& directory) {
    const auto file = directory / "requirements.toml";
    const auto requirements = read(file);
    const bool onlyManaged = requirements["allow_managed_hooks_only"].value_exact<bool>() == true;
    const bool isOff = hooksFeature(requirements) == false ||
                       hooksFeature(requirements, "feature_requirements") == false;
    if (!onlyManaged && !isOff) return std::nullopt;
    return HookObstacle{Kind::switchedOff, fmt::format("{} forbids them", file.string()),
                        askManager};
}

std::optional<HookObstacle> switchedOff(const std::filesystem::path& ownFile,
                                        const std::filesystem::path& managedDirectory) {
    const auto managedFile = managedDirectory / "managed_config.toml";
    for (const auto& file : {managedFile, ownFile, managedDirectory / "config.toml"}) {
        const auto isOn = hooksFeature(read(file));
        if (!isOn) continue;
        if (*isOn) return std::nullopt;
        auto cure = file == managedFile ? askManager
                    : file == ownFile   ? std::string{"set it to true there"}
                                        : fmt::format("set \"hooks = true\" under [features] in {}",
                                                      ownFile.string());
        return HookObstacle{Kind::switchedOff,
                            fmt::format("\"hooks\" is off under [features] in {}", file.string()),
                            std::move(cure)};
    }
    return std::nullopt;
}

// "SessionStart" as Codex writes it in a key: "session_start".
std::string inSnakeCase(std::string_view name) {
    std::string text;
    for (const char c : name) {
        const bool isUpper = c >= 'A' && c <= 'Z';
        if (isUpper && !text.empty()) text += '_';
        text += isUpper ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
}

// What follows the file's name in Codex's keys of our hooks: the event, and the places of group and
// handler from 0.
std::vector<std::string> placesOfOurs(const std::filesystem::path& hooksFile) {
    using namespace HookConfigStructure;
    std::vector<std::string> places;
    const auto text = ConfigFileWriter::readText(hooksFile);
    auto root = parseRoot(text ? text->value_or("") : "");
    auto* hooks = root ? value(*root, "hooks") : nullptr;
    if (!hooks) return places;
    const auto events = eventsOf(*hooks);
    if (!events) return places;
    for (const auto& event : **events) {
        if (!checkEvent(event) || !checkGroups(event)) continue;
        const auto& groups = groupsOf(event);
        for (std::size_t i = 0; i < groups.size(); ++i) {
            const auto* handlers = handlersOf(groups[i]);
            for (std::size_t j = 0; handlers && j < handlers->size(); ++j)
                if (HookHandler::isOurs((*handlers)[j]))
                    places.push_back(fmt::format(":{}:{}:{}", inSnakeCase(event.key), i, j));
        }
    }
    return places;
}

// The names by which Codex may know the file.
std::vector<std::string> namesOf(const std::filesystem::path& hooksFile) {
    std::error_code error;
    const auto directory = std::filesystem::weakly_canonical(hooksFile.parent_path(), error);
    return {hooksFile.string(), (directory / hooksFile.filename()).string()};
}

enum class Trust { none, given, switchedOff };

Trust trustIn(const toml::table& own, const std::vector<std::string>& names,
              const std::string& place) {
    for (const auto& name : names) {
        const auto state = own["hooks"]["state"][name + place];
        if (!state["trusted_hash"].is_string()) continue;
        return state["enabled"].value_exact<bool>() == false ? Trust::switchedOff : Trust::given;
    }
    return Trust::none;
}

std::optional<HookObstacle> untrusted(const std::filesystem::path& hooksFile,
                                      const toml::table& own) {
    const auto names = namesOf(hooksFile);
    std::vector<Trust> trust;
    for (const auto& place : placesOfOurs(hooksFile)) trust.push_back(trustIn(own, names, place));
    const auto which = [&](Trust kind) {
        const auto number = static_cast<std::size_t>(std::ranges::count(trust, kind));
        return number == 0              ? std::string{}
               : number == trust.size() ? std::string{"the hooks are"}
               : number == 1            ? fmt::format("1 of {} hooks is", trust.size())
                                        : fmt::format("{} of {} hooks are", number, trust.size());
    };
    if (const auto hooks = which(Trust::none); !hooks.empty())
        return HookObstacle{Kind::untrusted, hooks + " not trusted yet",
                            "start codex in a project and choose to trust them"};
    if (const auto hooks = which(Trust::switchedOff); !hooks.empty())
        return HookObstacle{Kind::untrusted, hooks + " switched off",
                            "start codex in a project and switch them on with /hooks"};
    return std::nullopt;
}

}  // namespace

std::optional<HookObstacle> obstacleInCodexSettings(const std::filesystem::path& hooksFile,
                                                    const std::filesystem::path& managedDirectory) {
    if (auto obstacle = forbidden(managedDirectory)) return obstacle;
    const auto ownFile = hooksFile.parent_path() / "config.toml";
    if (auto obstacle = switchedOff(ownFile, managedDirectory)) return obstacle;
    return untrusted(hooksFile, read(ownFile));
}

}  // namespace tallowbrook::host
