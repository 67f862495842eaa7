#include "Commands/SetupCommand.h"

#include <memory>

#include <fmt/core.h>
#include <unistd.h>

#include "Commands/AgentWords.h"
#include "Commands/CommandLine.h"
#include "Commands/DatabaseDoor.h"
#include "Commands/EditorsCommand.h"
#include "Commands/NotifyCommand.h"
#include "Domain/AgentProfile.h"
#include "Integrations/IntegrationSetup.h"
#include "Output/ExitStatus.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Setup/AgentBackups.h"
#include "Setup/HelperTrial.h"
#include "Setup/HookObstacle.h"
#include "Setup/LayoutPreservingEdit.h"
#include "Setup/ProgramLocation.h"
#include "Setup/Refusal.h"
#include "Setup/ReportingHome.h"
#include "Setup/SetupReversal.h"
#include "Setup/YesNoQuestion.h"
#include "Store/Settings.h"
#include "Watch/HostLock.h"

namespace tallowbrook::host {
namespace {

std::string printable(const std::filesystem::path& path) {
    return PrintableText::printable(path.string());
}

// Whether the chosen files may be changed on behalf of this home; says why not. Hooks that call
// another home's helper would still report to the standard one, and to take hooks out of an agent's
// own file would cut off the home that is in use.
bool mayChange(const TallowbrookPaths& paths, const AgentChoice& choice,
               const ReviewOptions& options) {
    if (options.dryRun || choice.configFile || agentsReportTo(paths)) return true;
    StandardStreams::complain(fmt::format(
        "The agents report to {} and not to {}, so their own configuration is left alone. Leave "
        "--home out, name a file to try on with --config FILE, or look with --dry-run.",
        TallowbrookPaths::defaultHome().string(), paths.home.string()));
    return false;
}

using Plan = std::expected<ConfigChangePlan, ConfigPlanError>;
using MakePlan = Plan (*)(const Agent&, const TallowbrookPaths&);

Plan planSetup(const Agent& agent, const TallowbrookPaths& paths) {
    auto plan = IntegrationSetup::planInstall(agent.provider, agent.configFile,
                                              paths.installedHelper().string());
    if (plan) *plan = keepLayout(std::move(*plan));
    return plan;
}

Plan planRemoval(const Agent& agent, const TallowbrookPaths& paths) {
    const auto helper = paths.installedHelper().string();
    auto plan = IntegrationSetup::planUninstall(agent.provider, agent.configFile, helper);
    if (!plan) return plan;
    std::vector<std::string> earlier;
    for (auto& backup : backupsOf({agent}, paths))
        if (backup.text) earlier.push_back(std::move(*backup.text));
    *plan = givingBack(keepLayout(std::move(*plan)), earlier,
                       IntegrationSetup::spec(agent.provider, helper));
    return plan;
}

struct AgentChange {
    Agent agent;
    ConfigChange change;
};

// Plans every change before the first question, so that a second file that cannot be read does not
// leave the first one changed.
std::expected<std::vector<AgentChange>, Sentence> prepare(const TallowbrookPaths& paths,
                                                          const AgentChoice& choice,
                                                          MakePlan makePlan) {
    const auto agents = chosenAgents(choice, Unnamed::thoseThere);
    if (!agents) return std::unexpected(agents.error());
    const bool isOnlyFile = agents->size() == 1;
    std::vector<AgentChange> changes;
    for (const auto& agent : *agents) {
        auto planner = [=]() -> std::expected<ConfigChangePlan, Sentence> {
            auto plan = makePlan(agent, paths);
            if (plan) return std::move(*plan);
            return std::unexpected(refusal(plan.error(), agent.configFile, isOnlyFile));
        };
        auto change = ConfigChange::prepare(std::move(planner), agent.backupDirectory(paths));
        if (!change) return std::unexpected(change.error());
        changes.push_back({agent, std::move(*change)});
    }
    return changes;
}

std::string announce(const std::vector<AgentChange>& changes, const TallowbrookPaths& paths) {
    std::string text;
    for (const auto& [agent, change] : changes)
        text += fmt::format("{}: {}\n", displayName(agent.provider), announcement(change.plan));
    return text + fmt::format("Backups: {}\n", printable(paths.backupsDirectory()));
}

std::string_view whatHappensTo(HelperStatus helper) {
    switch (helper) {
        case HelperStatus::current:
            return "is current";
        case HelperStatus::missing:
            return "to be installed";
        case HelperStatus::outdated:
        case HelperStatus::notExecutable:
            break;
    }
    return "to be renewed";
}

// Why the agent will run no hooks, set up or not; else empty.
std::string whyNot(const Agent& agent) {
    const auto obstacle = hookObstacle(agent);
    if (!obstacle || !obstacle->isSwitchedOff()) return {};
    return fmt::format("{} runs no hooks: {}.\n", displayName(agent.provider),
                       PrintableText::printable(obstacle->text()));
}

std::string nextStep(Provider provider) {
    const auto& profile = AgentProfile::of(provider);
    return fmt::format("{} is set up: {}\n", profile.displayName, profile.nextStep);
}

std::string whatIsNext(const TallowbrookPaths& paths) {
    if (HostLock::isHeld(paths)) return "\nNext: nothing; a host is running and tells you.\n";
    return "\nNext: run \"tallowbrook watch\" and leave it open; it tells you who waits for you.\n";
}

void noteSetUp(Database& database, Provider provider) {
    // A host that watches may note an event at any moment, which must not be overwritten.
    Settings settings{database};
    auto transaction = database.beginWriting();
    auto record = settings.integrationHealth(provider);
    record.noteSetUp(currentInstant());
    settings.setIntegrationHealth(provider, record);
    transaction.commit();
}

int finishSetup(const TallowbrookPaths& paths, const Agent& agent, bool isNew, Database& database) {
    // A setup that finds its hooks in place does not start the waiting for the first event anew.
    if (isNew) noteSetUp(database, agent.provider);
    if (auto tried = tryHelper(paths, agent.provider, database); !tried)
        return StandardStreams::fail(tried.error());
    StandardStreams::mention("The test event has arrived.\n");
    const auto obstacle = whyNot(agent);
    StandardStreams::mention(obstacle.empty() ? nextStep(agent.provider) : obstacle);
    return obstacle.empty() ? ExitStatus::done : ExitStatus::notInOrder;
}

int setUpEach(const TallowbrookPaths& paths, std::vector<AgentChange>& changes,
              const ReviewOptions& options, Database& database) {
    int status = ExitStatus::done;
    for (auto& [agent, change] : changes) {
        const auto outcome = change.review(options);
        status = worse(status, exitStatus(outcome));
        // Also where nothing had to change: a user in doubt calls it for the proof.
        if (outcome == ReviewOutcome::applied || outcome == ReviewOutcome::unchanged)
            status = worse(status,
                           finishSetup(paths, agent, outcome == ReviewOutcome::applied, database));
    }
    return status;
}

int complainOfBoth() {
    return StandardStreams::fail(
        "Editors and agents are set up one after the other: name no agent "
        "beside --editors.",
        ExitStatus::wrongUsage);
}

// Whether the user would see one is better known now than when it counts. What comes of it says
// nothing about the setup.
void offerTestNotification(const TallowbrookPaths& paths) {
    if (isatty(STDIN_FILENO) == 1 && agreesTo("Show a test notification?").value_or(false))
        testNotification(paths);
}

}  // namespace

int setup(const TallowbrookPaths& paths, const AgentChoice& choice, const ReviewOptions& options) {
    if (!mayChange(paths, choice, options)) return ExitStatus::wrongUsage;
    const auto source = bundledHelper();
    if (!source)
        return StandardStreams::fail(
            "The helper was not found beside this program. Install tallowbrook again.");
    auto changes = prepare(paths, choice, planSetup);
    if (!changes) return StandardStreams::fail(changes.error());
    if (!canAsk(options)) return ExitStatus::failed;

    const auto helper = IntegrationSetup::helperStatus(paths.installedHelper(), *source);
    StandardStreams::mention(fmt::format("Helper: {} ({})\n", printable(paths.installedHelper()),
                                         whatHappensTo(helper)) +
                             announce(*changes, paths));
    for (const auto& [agent, change] : *changes)
        if (!change.plan.isNoOp()) StandardStreams::mention(whyNot(agent));
    if (!agentsReportTo(paths))
        StandardStreams::complain(fmt::format(
            "The agents report to {} and not to this home, which is only for trying out.",
            TallowbrookPaths::defaultHome().string()));
    if (options.dryRun) {
        int status = ExitStatus::done;
        for (auto& [agent, change] : *changes)
            status = worse(status, exitStatus(change.review(options)));
        return status;
    }
    // Before the first hook that calls it.
    if (helper != HelperStatus::current)
        if (auto installed = IntegrationSetup::installHelper(*source, paths); !installed)
            return StandardStreams::fail(Sentence{installed.error().description()});
    const int status = withDatabase(
        paths, [&](Database& database) { return setUpEach(paths, *changes, options, database); });
    if (status != ExitStatus::done) return status;
    if (!options.assumeYes) offerTestNotification(paths);
    StandardStreams::mention(whatIsNext(paths));
    return status;
}

int removeSetup(const TallowbrookPaths& paths, const AgentChoice& choice,
                const ReviewOptions& options) {
    if (!mayChange(paths, choice, options)) return ExitStatus::wrongUsage;
    auto changes = prepare(paths, choice, planRemoval);
    if (!changes) return StandardStreams::fail(changes.error());
    if (!canAsk(options)) return ExitStatus::failed;
    StandardStreams::mention(announce(*changes, paths));
    int status = ExitStatus::done;
    for (auto& [agent, change] : *changes) {
        const auto outcome = change.review(options);
        status = worse(status, exitStatus(outcome));
        if (outcome == ReviewOutcome::applied)
            StandardStreams::mention(
                fmt::format("{} no longer calls tallowbrook.\n", displayName(agent.provider)));
        else if (outcome == ReviewOutcome::unchanged)
            StandardStreams::mention(
                fmt::format("{} does not call tallowbrook.\n", displayName(agent.provider)));
    }
    return status;
}

void addSetupCommands(CommandLine& line) {
    const auto given = std::make_shared<AgentWords>();
    auto setupWords = line.add(
        "setup", "Let the agents report to tallowbrook",
        [given](const TallowbrookPaths& paths) {
            if (given->contradictThemselves()) return complainOfBoth();
            return given->editors ? setUpEditors(paths, given->review)
                                  : setup(paths, given->choice(), given->review);
        },
        changeHelp +
            "\nThe helper and the database are put into the data directory before the first "
            "question.\nWith another --home, name a file to try on by --config: the agents report "
            "to the\nstandard data directory alone.\n3 too: an agent is set up, but told to run no "
            "hooks.");
    given->addAgents(setupWords, "those that are there");
    given->addEditors(setupWords, "Install the extension into the editors instead");
    given->addReview(setupWords);

    const auto givenToRemove = std::make_shared<AgentWords>();
    auto removeWords = line.add(
        "remove", "Take the hooks out of the agents' configuration again",
        [givenToRemove](const TallowbrookPaths& paths) {
            if (givenToRemove->contradictThemselves()) return complainOfBoth();
            return givenToRemove->editors
                       ? removeFromEditors(paths, givenToRemove->review)
                       : removeSetup(paths, givenToRemove->choice(), givenToRemove->review);
        },
        changeHelp);
    givenToRemove->addAgents(removeWords, "those that are there");
    givenToRemove->addEditors(removeWords, "Remove the extension from the editors instead");
    givenToRemove->addReview(removeWords);
}

}  // namespace tallowbrook::host
