#include "Commands/HealthCommand.h"

#include <fmt/core.h>

#include <algorithm>

#include "Commands/StoreCommand.h"
#include "Domain/RecordCoding.h"
#include "Integrations/ConfigFileWriter.h"
#include "Output/ExitStatus.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Output/TimeText.h"
#include "Preferences/HostSettings.h"
#include "Setup/ProgramLocation.h"
#include "Text/UTF8.h"

namespace tallowbrook::host {
namespace {

template <typename State>
bool is(const HookInstallState& hooks) {
    return std::holds_alternative<State>(hooks.state);
}

bool canRun(HelperStatus helper) {
    return helper == HelperStatus::current || helper == HelperStatus::outdated;
}

std::expected<HookInstallState, std::string> inspect(const Agent& agent,
                                                     const TallowbrookPaths& paths) {
    const auto text = ConfigFileWriter::readText(agent.configFile);
    if (!text) return std::unexpected(text.error().description());
    const auto hooks = HookConfigMerger::inspect(
        *text, IntegrationSetup::spec(agent.provider, paths.installedHelper().string()));
    if (!hooks) return std::unexpected(hooks.error().description());
    return *hooks;
}

std::string joined(const std::vector<std::string>& words, const std::string& separator) {
    std::string text;
    for (const auto& word : words) text += (text.empty() ? "" : separator) + word;
    return text;
}

std::string eventsDetail(const IntegrationHealth& events, Instant now) {
    if (const auto* waiting = std::get_if<IntegrationHealth::Waiting>(&events.state))
        return "for the first event since the setup at " + TimeText::shortTime(waiting->since, now);
    if (const auto* silent = std::get_if<IntegrationHealth::Silent>(&events.state))
        return "no event since the setup at " + TimeText::shortTime(silent->since, now);
    if (const auto* receiving = std::get_if<IntegrationHealth::Receiving>(&events.state))
        return "last event " + TimeText::ago(receiving->lastEventAt, now);
    return "for the first event; start \"tallowbrook watch\", which reads what comes";
}

// What stands behind the state in the table; may be empty.
std::string detail(const AgentHealth& health, Instant now) {
    if (!health.hooks) return health.hooks.error();
    if (const auto* partial = std::get_if<HookInstallState::Partial>(&health.hooks->state))
        return "no hook for " + joined(partial->missingEvents, ", ");
    if (const auto* stale = std::get_if<HookInstallState::NeedsRepair>(&health.hooks->state))
        return fmt::format("{} out of date",
                           stale->staleHandlers == 1
                               ? "one hook is"
                               : fmt::format("{} hooks are", stale->staleHandlers));
    if (is<HookInstallState::NotConfigured>(*health.hooks)) return {};
    if (!health.isReady) return "the helper cannot run";
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
        entry.encode("error", UTF8::replacingInvalid(health.hooks.error()));
    } else {
        if (const auto* partial = std::get_if<HookInstallState::Partial>(&health.hooks->state))
            entry.encodeRaw("missingEvents",
                            "[\"" + joined(partial->missingEvents, "\",\"") + "\"]");
        if (const auto* stale = std::get_if<HookInstallState::NeedsRepair>(&health.hooks->state))
            entry.encode("staleHandlers", stale->staleHandlers);
    }
    encodeEvents(health.events, entry);
    return entry.text();
}

struct Report {
    HelperStatus helper;
    std::filesystem::path helperFile;
    std::vector<AgentHealth> agents;

    std::string table(Instant now) const {
        auto text = fmt::format("Helper: {} ({})\n", rawValue(helper),
                                PrintableText::printable(helperFile.string()));
        for (const auto& health : agents) {
            const auto more = PrintableText::printable(detail(health, now));
            text += fmt::format("{}: {}{}{} ({})\n", displayName(health.agent.provider),
                                health.state(), more.empty() ? "" : ", ", more,
                                PrintableText::printable(health.agent.configFile.string()));
        }
        return text;
    }

    std::string json() const {
        std::string list;
        for (const auto& health : agents) list += (list.empty() ? "" : ",") + agentJSON(health);
        RecordEncoder report;
        report.encode("helper", helper);
        report.encode("helperFile", UTF8::replacingInvalid(helperFile.string()));
        report.encodeRaw("agents", "[" + list + "]");
        return PrintableText::printableJSON(report.text()) + "\n";
    }
};

void judgeEvents(std::vector<AgentHealth>& agents, const AgentChoice& choice, EventStore& store,
                 Instant now) {
    // Whoever watches may note an event at any moment, which must not be overwritten.
    auto transaction = store.beginWriting();
    for (auto& health : agents) {
        const auto stored = store.integrationHealth(health.agent.provider);
        auto record = stored;
        health.judgeEvents(record, now);
        if (record != stored) store.setIntegrationHealth(health.agent.provider, record);
    }
    // What is stored is about the agent's own file, of which another one says nothing.
    if (!choice.configFile) transaction.commit();
}

}  // namespace

std::string_view AgentHealth::state() const {
    if (!hooks) return "unreadable";
    if (is<HookInstallState::NotConfigured>(*hooks)) return "not set up";
    if (is<HookInstallState::Partial>(*hooks)) return "partial";
    if (is<HookInstallState::NeedsRepair>(*hooks)) return "needs repair";
    struct Word {
        std::string_view operator()(const IntegrationHealth::Waiting&) const { return "waiting"; }
        std::string_view operator()(const IntegrationHealth::Silent&) const { return "silent"; }
        std::string_view operator()(const IntegrationHealth::Receiving&) const {
            return "receiving";
        }
        // Nothing was ever stored.
        std::string_view operator()(const IntegrationHealth::NotApplicable&) const {
            return "waiting";
        }
    };
    // All hooks are there, but they call a helper that is not.
    if (!isReady) return "needs repair";
    return std::visit(Word{}, events.state);
}

bool AgentHealth::needsAttention() const {
    const auto word = state();
    return word != "not set up" && word != "waiting" && word != "receiving";
}

AgentHealth AgentHealth::of(const Agent& agent, const TallowbrookPaths& paths,
                            HelperStatus helper) {
    auto hooks = inspect(agent, paths);
    const bool isReady = hooks && is<HookInstallState::Installed>(*hooks) && canRun(helper);
    return {agent, std::move(hooks), isReady};
}

void AgentHealth::judgeEvents(IntegrationHealthRecord& record, Instant now) {
    // A file that cannot be read does not say that the hooks are gone. Live events are noted as
    // they are stored.
    if (hooks)
        record.reconcile(!is<HookInstallState::NotConfigured>(*hooks), isReady, std::nullopt, now);
    events = record.health(isReady, now, healthGracePeriod);
}

int showHealth(const TallowbrookPaths& paths, const AgentChoice& choice, ListFormat format) {
    const auto agents = chosenAgents(choice, Unnamed::all);
    if (!agents) return StandardStreams::fail(agents.error());
    Report report{
        IntegrationSetup::helperStatus(paths.installedHelper(), bundledHelper().value_or("")),
        paths.installedHelper(),
        {}};
    for (const auto& agent : *agents)
        report.agents.push_back(AgentHealth::of(agent, paths, report.helper));

    return withStoreIfAny(paths, [&](EventStore* store) {
        const Instant now = currentInstant();
        if (store != nullptr) judgeEvents(report.agents, choice, *store, now);
        const int shown = StandardStreams::showAsResult(
            format == ListFormat::json ? report.json() : report.table(now));
        if (shown != ExitStatus::done) return shown;
        return std::ranges::any_of(report.agents, &AgentHealth::needsAttention)
                   ? ExitStatus::notInOrder
                   : ExitStatus::done;
    });
}

}  // namespace tallowbrook::host
