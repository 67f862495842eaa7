#include "Commands/SetupCommand.h"

#include <fmt/core.h>

#include "Commands/StoreCommand.h"
#include "Domain/AgentProfile.h"
#include "Integrations/IntegrationSetup.h"
#include "Output/ExitStatus.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Setup/HelperTrial.h"
#include "Setup/ProgramLocation.h"

namespace tallowbrook::host {
namespace {

std::string printable(const std::filesystem::path& path) {
    return PrintableText::printable(path.string());
}

using MakePlan = std::expected<ConfigChangePlan, ConfigPlanError> (*)(Provider,
                                                                      const std::filesystem::path&,
                                                                      std::string_view);

struct AgentChange {
    Agent agent;
    ConfigChange change;
};

std::expected<std::vector<AgentChange>, std::string> prepare(const TallowbrookPaths& paths,
                                                             const AgentChoice& choice,
                                                             MakePlan makePlan) {
    const auto agents = chosenAgents(choice, Unnamed::thoseThere);
    if (!agents) return std::unexpected(agents.error());
    std::vector<AgentChange> changes;
    for (const auto& agent : *agents) {
        auto planner = [=]() -> std::expected<ConfigChangePlan, std::string> {
            auto plan =
                makePlan(agent.provider, agent.configFile, paths.installedHelper().string());
            if (plan) return std::move(*plan);
            const auto text = plan.error().description();
            // What is wrong inside a file is told without its name.
            const bool namesFile = std::holds_alternative<ConfigFileError>(plan.error().reason);
            return std::unexpected(namesFile ? text : agent.configFile.string() + ": " + text);
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

std::string nextStep(Provider provider) {
    const auto& profile = AgentProfile::of(provider);
    return fmt::format("{} is set up: {}\n", profile.displayName, profile.nextStep);
}

void noteSetUp(EventStore& store, Provider provider) {
    // Whoever watches may note an event at any moment, which must not be overwritten.
    auto transaction = store.beginWriting();
    auto record = store.integrationHealth(provider);
    record.noteSetUp(currentInstant());
    store.setIntegrationHealth(provider, record);
    transaction.commit();
}

int finishSetup(const TallowbrookPaths& paths, Provider provider, bool isNew, EventStore& store) {
    if (isNew) noteSetUp(store, provider);
    if (auto tried = tryHelper(paths, provider, store); !tried)
        return StandardStreams::fail(tried.error());
    StandardStreams::mention("The test event has arrived.\n");
    StandardStreams::mention(nextStep(provider));
    return ExitStatus::done;
}

int setUpEach(const TallowbrookPaths& paths, std::vector<AgentChange>& changes,
              const ReviewOptions& options, EventStore& store) {
    int status = ExitStatus::done;
    for (auto& [agent, change] : changes) {
        const auto outcome = change.review(options);
        status = worse(status, exitStatus(outcome));
        if (outcome == ReviewOutcome::applied || outcome == ReviewOutcome::unchanged)
            status = worse(status, finishSetup(paths, agent.provider,
                                               outcome == ReviewOutcome::applied, store));
    }
    return status;
}

}  // namespace

int setup(const TallowbrookPaths& paths, const AgentChoice& choice, const ReviewOptions& options) {
    const auto source = bundledHelper();
    if (!source)
        return StandardStreams::fail(
            "The helper was not found beside this program. Install tallowbrook again.");
    auto changes = prepare(paths, choice, IntegrationSetup::planInstall);
    if (!changes) return StandardStreams::fail(changes.error() + " Nothing was changed.");
    if (!canAsk(options)) return ExitStatus::failed;

    const auto helper = IntegrationSetup::helperStatus(paths.installedHelper(), *source);
    StandardStreams::mention(fmt::format("Helper: {} ({})\n", printable(paths.installedHelper()),
                                         whatHappensTo(helper)) +
                             announce(*changes, paths));
    if (paths != TallowbrookPaths::standard())
        StandardStreams::complain(fmt::format(
            "The agents report to {} and not to this home, which is only for trying out.",
            TallowbrookPaths::defaultHome().string()));
    if (options.dryRun) {
        int status = ExitStatus::done;
        for (auto& [agent, change] : *changes)
            status = worse(status, exitStatus(change.review(options)));
        return status;
    }
    if (helper != HelperStatus::current)
        if (auto installed = IntegrationSetup::installHelper(*source, paths); !installed)
            return StandardStreams::fail(installed.error().description());
    return withStore(paths,
                     [&](EventStore& store) { return setUpEach(paths, *changes, options, store); });
}

int removeSetup(const TallowbrookPaths& paths, const AgentChoice& choice,
                const ReviewOptions& options) {
    auto changes = prepare(paths, choice, IntegrationSetup::planUninstall);
    if (!changes) return StandardStreams::fail(changes.error() + " Nothing was changed.");
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

}  // namespace tallowbrook::host
