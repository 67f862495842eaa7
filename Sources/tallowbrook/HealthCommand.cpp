#include "HealthCommand.h"

#include <fmt/core.h>

#include <algorithm>

#include "ConfigChange.h"
#include "Domain/RecordCoding.h"
#include "Domain/UTF8.h"
#include "EventStore.h"
#include "ExitStatus.h"
#include "HostSettings.h"
#include "Integrations/ConfigFileWriter.h"
#include "ProgramLocation.h"
#include "TerminalOutput.h"
#include "TerminalText.h"

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
        return "for the first event since the setup at " +
               TerminalText::shortTime(waiting->since, now);
    if (const auto* silent = std::get_if<IntegrationHealth::Silent>(&events.state))
        return "no event since the setup at " + TerminalText::shortTime(silent->since, now);
    if (const auto* receiving = std::get_if<IntegrationHealth::Receiving>(&events.state))
        return "last event " + TerminalText::ago(receiving->lastEventAt, now);
    return "the helper cannot run";
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
                                TerminalText::printable(helperFile.string()));
        for (const auto& health : agents) {
            const auto more = TerminalText::printable(detail(health, now));
            text += fmt::format("{}: {}{}{} ({})\n", displayName(health.agent.provider),
                                health.state(), more.empty() ? "" : ", ", more,
                                TerminalText::printable(health.agent.configFile.string()));
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
        return TerminalText::printableJSON(report.text()) + "\n";
    }
};

std::vector<AgentHealth> healthOfAll(const std::vector<Agent>& agents,
                                     const TallowbrookPaths& paths, HelperStatus helper) {
    std::vector<AgentHealth> all;
    const Instant now = currentInstant();
    // Looking creates no database where there is none.
    std::optional<EventStore> store;
    if (EventStore::exists(paths)) {
        auto opened = EventStore::open(paths);
        if (opened)
            store = std::move(*opened);
        else
            TerminalOutput::complain(opened.error());
    }
    for (const auto& agent : agents) {
        const auto stored =
            store ? store->integrationHealth(agent.provider) : IntegrationHealthRecord{};
        auto record = stored;
        all.push_back(healthOf(agent, paths, helper, record, now));
        if (store && record != stored) store->setIntegrationHealth(agent.provider, record);
    }
    return all;
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
        // All hooks are there, but they call a helper that is not.
        std::string_view operator()(const IntegrationHealth::NotApplicable&) const {
            return "needs repair";
        }
    };
    return std::visit(Word{}, events.state);
}

bool AgentHealth::needsAttention() const {
    const auto word = state();
    return word != "not set up" && word != "waiting" && word != "receiving";
}

AgentHealth healthOf(const Agent& agent, const TallowbrookPaths& paths, HelperStatus helper,
                     IntegrationHealthRecord& record, Instant now) {
    auto hooks = inspect(agent, paths);
    const bool isConfigured = hooks && is<HookInstallState::Installed>(*hooks);
    const bool isReady = isConfigured && canRun(helper);
    // Live events are noted as they are stored.
    record.reconcile(isConfigured, isReady, std::nullopt, now);
    return {agent, std::move(hooks), record.health(isReady, now, healthGracePeriod)};
}

int showHealth(const TallowbrookPaths& paths, const AgentChoice& choice, ListFormat format) {
    const auto agents = chosenAgents(choice, Unnamed::all);
    if (!agents) {
        TerminalOutput::complain(agents.error());
        return ExitStatus::failed;
    }
    const auto helper =
        IntegrationSetup::helperStatus(paths.installedHelper(), bundledHelper().value_or(""));
    try {
        const Report report{helper, paths.installedHelper(), healthOfAll(*agents, paths, helper)};
        const int shown = TerminalOutput::showAsResult(
            format == ListFormat::json ? report.json() : report.table(currentInstant()));
        if (shown != 0) return shown;
        const bool isFine =
            std::ranges::none_of(report.agents, [](const auto& a) { return a.needsAttention(); });
        return isFine ? ExitStatus::done : ExitStatus::notInOrder;
    } catch (const SQLite::Exception& error) {
        TerminalOutput::complain(fmt::format("The database failed: {}.", error.what()));
        return ExitStatus::failed;
    }
}

}  // namespace tallowbrook::host
