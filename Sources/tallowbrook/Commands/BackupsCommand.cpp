#include "Commands/BackupsCommand.h"

#include <fmt/core.h>

#include <algorithm>
#include <memory>

#include "Commands/AgentWords.h"
#include "Commands/CommandLine.h"
#include "Output/ExitStatus.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Output/TimeText.h"
#include "Setup/AgentBackups.h"

namespace tallowbrook::host {
namespace {

std::expected<std::vector<AgentBackup>, Sentence> find(const TallowbrookPaths& paths,
                                                       const AgentChoice& choice) {
    const auto agents = chosenAgents(choice, Unnamed::all);
    if (!agents) return std::unexpected(agents.error());
    return backupsOf(*agents, paths);
}

bool isMeant(const AgentBackup& entry, std::size_t number, const std::string& word) {
    // A number comes from the list; a name or path may come from a script.
    const auto& file = entry.backup.url;
    return std::to_string(number) == word || file.filename() == word || file == word;
}

const AgentBackup* select(const std::vector<AgentBackup>& backups, const std::string& word) {
    for (std::size_t i = 0; i < backups.size(); ++i)
        if (isMeant(backups[i], i + 1, word)) return &backups[i];
    return nullptr;
}

// The call was right, but there may be nothing to put back.
const AgentBackup* selectBeforeSetup(const std::vector<AgentBackup>& backups) {
    const auto found =
        std::ranges::find(backups, AgentBackup::State::beforeSetup, &AgentBackup::state);
    return found == backups.end() ? nullptr : &*found;
}

// "before setup, 14:05", of a backup.
std::string whatItIs(const AgentBackup& entry) {
    return fmt::format("{}, {}", rawValue(entry.state),
                       TimeText::shortTime(entry.backup.createdAt, currentInstant()));
}

}  // namespace

int listBackups(const TallowbrookPaths& paths, const AgentChoice& choice) {
    const auto backups = find(paths, choice);
    if (!backups) return StandardStreams::fail(backups.error());
    if (backups->empty()) return StandardStreams::showAsResult("There are no backups.\n");
    const Instant now = currentInstant();
    std::string text;
    for (std::size_t i = 0; i < backups->size(); ++i) {
        const auto& entry = (*backups)[i];
        text += fmt::format("{:>3}  {:<13}  {:<11}  {:<12}  {}\n", i + 1,
                            TimeText::shortTime(entry.backup.createdAt, now),
                            displayName(entry.agent.provider), rawValue(entry.state),
                            PrintableText::printable(entry.backup.url.string()));
    }
    return StandardStreams::showAsResult(text);
}

int restoreBackup(const TallowbrookPaths& paths, const AgentChoice& choice,
                  const std::optional<std::string>& backup, const ReviewOptions& options) {
    const auto backups = find(paths, choice);
    if (!backups) return StandardStreams::fail(backups.error());
    if (backups->empty() && !backup) return StandardStreams::fail("There are no backups.");
    const auto* selected = backup ? select(*backups, *backup) : selectBeforeSetup(*backups);
    if (selected == nullptr && !backup)
        return StandardStreams::fail(
            "No backup is from before a setup. \"tallowbrook backups\" lists those there are; name "
            "one of them.");
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
    StandardStreams::mention(
        fmt::format("{}: {}\nBackup: {} ({})\n", displayName(selected->agent.provider),
                    announcement(change->plan),
                    PrintableText::printable(selected->backup.url.string()), whatItIs(*selected)));
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
        std::optional<std::string> first;
        std::optional<std::string> second;
        std::optional<std::string> backup;

        // Whether the words name one agent and one backup at most, in either order.
        bool sort() {
            const auto known = agentNames();
            for (const auto& word : {first, second}) {
                if (!word) continue;
                const bool isAgent = std::ranges::find(known, *word) != known.end();
                if (isAgent ? !names.empty() : backup.has_value()) return false;
                if (isAgent)
                    names.push_back(*word);
                else
                    backup = word;
            }
            return true;
        }
    };
    const auto given = std::make_shared<Words>();
    auto words = line.add(
        "restore", "Put a backup of a configuration file back",
        [given](const TallowbrookPaths& paths) {
            if (!given->sort())
                return StandardStreams::fail("Name one agent and one backup at most.",
                                             ExitStatus::wrongUsage);
            return restoreBackup(paths, given->choice(), given->backup, given->review);
        },
        changeHelp);
    words.addOptionalOperand("AGENT", given->first, agentNameChoice() + "; without, any");
    words.addOptionalOperand("BACKUP", given->second,
                             "Its number in the list of these agents' backups, its name or its "
                             "path; without, the newest from before a setup");
    given->addConfigFile(words);
    given->addReview(words);
}

}  // namespace tallowbrook::host
