#include "Commands/HealthCommand.h"

#include <memory>

#include <fmt/format.h>

#include <algorithm>

#include "Commands/AgentWords.h"
#include "Commands/CommandLine.h"
#include "Commands/HostRow.h"
#include "Commands/UpToDateDatabase.h"
#include "Domain/RecordCoding.h"
#include "Output/ExitStatus.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Output/TimeText.h"
#include "Setup/AgentHealth.h"
#include "Setup/ProgramLocation.h"
#include "Store/Settings.h"
#include "Text/UTF8.h"

namespace tallowbrook::host {
namespace {

std::string eventsDetail(const IntegrationHealth& events, Instant now) {
    if (const auto* waiting = std::get_if<IntegrationHealth::Waiting>(&events.state))
        return "for the first event since the setup at " + TimeText::shortTime(waiting->since, now);
    if (const auto* silent = std::get_if<IntegrationHealth::Silent>(&events.state))
        return "no event since the setup at " + TimeText::shortTime(silent->since, now);
    if (const auto* receiving = std::get_if<IntegrationHealth::Receiving>(&events.state))
        return "last event " + TimeText::ago(receiving->lastEventAt, now);
    // Not judged: without a database, no host has run on this home.
    return "for the first event";
}

// What stands behind the state in the table; may be empty.
std::string detail(const AgentHealth& health, Instant now) {
    if (!health.hooks) return health.hooks.error().description();
    if (const auto* partial = std::get_if<HookInstallState::Partial>(&health.hooks->state))
        return fmt::format("no hook for {}", fmt::join(partial->missingEvents, ", "));
    if (const auto* stale = std::get_if<HookInstallState::NeedsRepair>(&health.hooks->state))
        return fmt::format("{} out of date",
                           stale->staleHandlers == 1
                               ? "one hook is"
                               : fmt::format("{} hooks are", stale->staleHandlers));
    if (health.state() == AgentHealth::State::notSetUp) return {};
    if (!health.isReady) return "the helper cannot run";
    if (health.state() == AgentHealth::State::blocked) return health.obstacle->text();
    return eventsDetail(health.events, now);
}

void encodeEvents(const IntegrationHealth& events, RecordEncoder& entry) {
    if (const auto* waiting = std::get_if<IntegrationHealth::Waiting>(&events.state))
        entry.encode("setUpAt", waiting->since);
    if (const auto* silent = std::get_if<IntegrationHealth::Silent>(&events.state))
        entry.encode("setUpAt", silent->since);
    if (const auto* receiving = std::get_if<IntegrationHealth::Receiving>(&events.state))
        entry.encode("lastLiveEventAt", receiving->lastEventAt);
}

std::string agentJSON(const AgentHealth& health) {
    RecordEncoder entry;
    entry.encode("agent", hookSourceWord(health.agent.provider));
    entry.encode("configFile", UTF8::replacingInvalid(health.agent.configFile.string()));
    entry.encode("state", health.state());
    if (!health.hooks) {
        entry.encode("error", UTF8::replacingInvalid(health.hooks.error().description()));
    } else {
        if (const auto* partial = std::get_if<HookInstallState::Partial>(&health.hooks->state))
            entry.encode("missingEvents", partial->missingEvents);
        if (const auto* stale = std::get_if<HookInstallState::NeedsRepair>(&health.hooks->state))
            entry.encode("staleHandlers", stale->staleHandlers);
    }
    if (health.state() == AgentHealth::State::blocked)
        entry.encode("obstacle", UTF8::replacingInvalid(health.obstacle->text()));
    encodeEvents(health.events, entry);
    return entry.text();
}

struct Report {
    std::optional<HostHolder> host;
    HelperStatus helper;
    std::filesystem::path helperFile;
    std::vector<AgentHealth> agents;

    std::string table(Instant now) const {
        auto text = hostRow(host, now) + fmt::format("Helper: {} ({})\n", rawValue(helper),
                                                     PrintableText::printable(helperFile.string()));
        for (const auto& health : agents) {
            const auto more = PrintableText::printable(detail(health, now));
            text += fmt::format("{}: {}{}{} ({})\n", displayName(health.agent.provider),
                                rawValue(health.state()), more.empty() ? "" : ", ", more,
                                PrintableText::printable(health.agent.configFile.string()));
        }
        return text;
    }

    std::string json() const {
        std::string list;
        for (const auto& health : agents) list += (list.empty() ? "" : ",") + agentJSON(health);
        RecordEncoder report;
        report.encodeRaw("host", hostJSON(host));
        report.encode("helper", helper);
        report.encode("helperFile", UTF8::replacingInvalid(helperFile.string()));
        report.encodeRaw("agents", "[" + list + "]");
        return PrintableText::printableJSON(report.text()) + "\n";
    }
};

void judgeEvents(std::vector<AgentHealth>& agents, const AgentChoice& choice, Database& database,
                 Instant now) {
    Settings settings{database};
    if (database.isReadOnly()) {
        for (auto& health : agents) {
            auto record = settings.integrationHealth(health.agent.provider);
            health.judgeEvents(record, now);
        }
        return;
    }
    // A host that watches may note an event at any moment, which must not be overwritten.
    auto transaction = database.beginWriting();
    for (auto& health : agents) {
        const auto stored = settings.integrationHealth(health.agent.provider);
        auto record = stored;
        health.judgeEvents(record, now);
        if (record != stored) settings.setIntegrationHealth(health.agent.provider, record);
    }
    // What is stored is about the agent's own file, of which another one says nothing.
    if (!choice.configFile) transaction.commit();
}

}  // namespace

int showHealth(const TallowbrookPaths& paths, const AgentChoice& choice, ListFormat format) {
    const auto agents = chosenAgents(choice, Unnamed::all);
    if (!agents) return StandardStreams::fail(agents.error());
    Report report{
        HostLock::holder(paths),
        IntegrationSetup::helperStatus(paths.installedHelper(), bundledHelper().value_or("")),
        paths.installedHelper(),
        {}};
    for (const auto& agent : *agents)
        report.agents.push_back(AgentHealth::of(agent, paths, report.helper));

    return withUpToDateDatabase(paths, [&](Database* database) {
        const Instant now = currentInstant();
        if (database != nullptr) judgeEvents(report.agents, choice, *database, now);
        const int shown = StandardStreams::showAsResult(
            format == ListFormat::json ? report.json() : report.table(now));
        if (shown != ExitStatus::done) return shown;
        // So that a script can act without reading the words.
        if (std::ranges::any_of(report.agents, &AgentHealth::needsAttention))
            return ExitStatus::notInOrder;
        return report.host ? ExitStatus::done : ExitStatus::noHost;
    });
}

void addHealthCommand(CommandLine& line) {
    struct Words : AgentWords {
        bool json = false;
    };
    const auto given = std::make_shared<Words>();
    auto words = line.add(
        "health", "Tell whether the agents' events arrive, and whether a host runs",
        [given](const TallowbrookPaths& paths) {
            return showHealth(paths, given->choice(),
                              given->json ? ListFormat::json : ListFormat::table);
        },
        "3: an agent's state is partial, needs repair, silent, blocked or unreadable.\n"
        "4: all else is in order, but no host runs, so nobody is told anything.\n"
        "States: not set up, partial, needs repair, waiting (for the first event since the "
        "setup), silent\n(for more than ten minutes after it), receiving, blocked (the agent does "
        "not run the "
        "hooks), unreadable.");
    given->addAgents(words, "all");
    words.addFlag("--json", given->json, "As a JSON object, for programs");
}

}  // namespace tallowbrook::host
