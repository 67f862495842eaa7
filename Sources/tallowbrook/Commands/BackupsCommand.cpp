#include "Commands/BackupsCommand.h"

#include <memory>

#include <fmt/core.h>

#include <algorithm>
#include <tuple>

#include "Commands/AgentWords.h"
#include "Commands/CommandLine.h"
#include "Integrations/IntegrationSetup.h"
#include "Output/ExitStatus.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Output/TimeText.h"

namespace tallowbrook::host {
namespace {

struct AgentBackup {
    Agent agent;
    ConfigBackup backup;
    std::filesystem::file_time_type writtenAt;
};

// The earliest time where the system does not tell.
std::filesystem::file_time_type writtenAt(const std::filesystem::path& file) {
    std::error_code error;
    const auto time = std::filesystem::last_write_time(file, error);
    return error ? std::filesystem::file_time_type::min() : time;
}

std::expected<std::vector<AgentBackup>, Sentence> find(const TallowbrookPaths& paths,
                                                       const AgentChoice& choice) {
    const auto agents = chosenAgents(choice, Unnamed::all);
    if (!agents) return std::unexpected(agents.error());
    std::vector<AgentBackup> found;
    for (const auto& agent : *agents)
        for (auto& backup :
             IntegrationSetup::backups(agent.configFile, agent.backupDirectory(paths))) {
            const auto time = writtenAt(backup.url);
            found.push_back({agent, std::move(backup), time});
        }
    // Names tell the second only, and several changes may come within one.
    std::ranges::sort(found, std::ranges::greater{}, [](const AgentBackup& entry) {
        return std::tie(entry.backup.createdAt, entry.writtenAt, entry.backup.url);
    });
    return found;
}

bool isMeant(const AgentBackup& entry, std::size_t number, const std::string& word) {
    // A number comes from the list; a name or path may come from a script.
    const auto& file = entry.backup.url;
    return std::to_string(number) == word || file.filename() == word || file == word;
}

const AgentBackup* select(const std::vector<AgentBackup>& backups,
                          const std::optional<std::string>& word) {
    for (std::size_t i = 0; i < backups.size(); ++i)
        if (!word || isMeant(backups[i], i + 1, *word)) return &backups[i];
    return nullptr;
}

}  // namespace

int listBackups(const TallowbrookPaths& paths, const AgentChoice& choice) {
    const auto backups = find(paths, choice);
    if (!backups) return StandardStreams::fail(backups.error());
    if (backups->empty()) return StandardStreams::showAsResult("There are no backups.\n");
    const Instant now = currentInstant();
    std::string text;
    for (std::size_t i = 0; i < backups->size(); ++i) {
        const auto& [agent, backup, time] = (*backups)[i];
        text += fmt::format("{:>3}  {:<13}  {:<11}  {}\n", i + 1,
                            TimeText::shortTime(backup.createdAt, now), displayName(agent.provider),
                            PrintableText::printable(backup.url.string()));
    }
    return StandardStreams::showAsResult(text);
}

int restoreBackup(const TallowbrookPaths& paths, const AgentChoice& choice,
                  const std::optional<std::string>& backup, const ReviewOptions& options) {
    const auto backups = find(paths, choice);
    if (!backups) return StandardStreams::fail(backups.error());
    const auto* selected = select(*backups, backup);
    // The call was right, but there is nothing to put back.
    if (selected == nullptr && !backup) return StandardStreams::fail("There are no backups.");
    if (selected == nullptr)
        return StandardStreams::fail(
            fmt::format("There is no backup \"{}\". \"tallowbrook backups\" lists them.", *backup),
            ExitStatus::wrongUsage);
    const auto planner = [=]() -> std::expected<ConfigChangePlan, Sentence> {
        auto plan = IntegrationSetup::planRestore(selected->backup, selected->agent.configFile);
        if (plan) return std::move(*plan);
        return std::unexpected(Sentence{plan.error().description()});
    };
    auto change = ConfigChange::prepare(planner, selected->agent.backupDirectory(paths));
    if (!change) return StandardStreams::fail(change.error().followedBy("Nothing was changed."));
    if (!canAsk(options)) return ExitStatus::failed;
    StandardStreams::mention(fmt::format(
        "{}: {}\nBackup: {}\n", displayName(selected->agent.provider), announcement(change->plan),
        PrintableText::printable(selected->backup.url.string())));
    const auto outcome = change->review(options);
    if (outcome == ReviewOutcome::applied) StandardStreams::mention("The backup was put back.\n");
    return exitStatus(outcome);
}

void addBackupsCommands(CommandLine& line) {
    const auto listed = std::make_shared<AgentWords>();
    auto listWords = line.add(
        "backups", "List what was in the configuration files before",
        [listed](const TallowbrookPaths& paths) { return listBackups(paths, listed->choice()); });
    listed->addAgents(listWords, "all");

    struct Words : AgentWords {
        std::optional<std::string> backup;
    };
    const auto given = std::make_shared<Words>();
    auto words = line.add(
        "restore", "Put a backup of a configuration file back",
        [given](const TallowbrookPaths& paths) {
            return restoreBackup(paths, given->choice(), given->backup, given->review);
        },
        changeHelp);
    words.addOptionalOperand("BACKUP", given->backup,
                             "Its number in the list, its name or its path; without, the newest");
    words.addChoices("--agent", agentNames(), given->names, "Only backups of " + agentNameChoice());
    given->addConfigFile(words);
    given->addReview(words);
}

}  // namespace tallowbrook::host
