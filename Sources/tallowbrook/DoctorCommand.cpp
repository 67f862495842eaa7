#include "DoctorCommand.h"

#include <optional>

#include "Agents.h"
#include "Diagnostics/DiagnosticsReport.h"
#include "EventBridge/SpoolDrainer.h"
#include "EventIngestion/PayloadNormalizer.h"
#include "EventStore.h"
#include "HealthCommand.h"
#include "HostSettings.h"
#include "Integrations/ProviderDetector.h"
#include "ProgramLocation.h"
#include "TerminalOutput.h"
#include "TerminalText.h"

namespace tallowbrook::host {
namespace {

constexpr std::size_t logLines = 10;

// Looking makes no database where there is none, and a store that fails is part of what the report
// is for.
std::optional<EventStore> openToLook(const TallowbrookPaths& paths) {
    if (!EventStore::exists(paths)) return std::nullopt;
    auto store = EventStore::open(paths);
    if (!store) return std::nullopt;
    return std::move(*store);
}

void addStored(DiagnosticsReport& report, EventStore& store, Instant now) {
    try {
        report.storedEventCount = store.eventCount();
        report.lastEventAt = store.newestEventAt();
        for (const auto& session :
             SessionList::make(store.sessions(), ListScope::all, now).sessions)
            ++report.sessionCountsByStatus[std::string{rawValue(session.status)}];
    } catch (const SQLite::Exception&) {
        report.storedEventCount.reset();
    }
}

IntegrationHealthRecord healthRecord(std::optional<EventStore>& store, Provider provider) {
    if (!store) return {};
    try {
        return store->integrationHealth(provider);
    } catch (const SQLite::Exception&) {
        return {};
    }
}

void addAgents(DiagnosticsReport& report, std::optional<EventStore>& store, Instant now) {
    const auto detector = ProviderDetector::live(true);
    const auto helper = IntegrationSetup::helperStatus(report.paths.installedHelper(),
                                                       bundledHelper().value_or(""));
    for (const auto& agent : allAgents()) {
        auto detection = detector.detect(agent.provider);
        detection.hookConfigPath = agent.configFile.string();
        report.detections.push_back(std::move(detection));

        auto record = healthRecord(store, agent.provider);
        const auto health = healthOf(agent, report.paths, helper, record, now);
        report.integrationStates[agent.provider] = health.state();
        if (auto text = health.events.diagnosticDescription())
            report.integrationHealth[agent.provider] = std::move(*text);
    }
}

}  // namespace

int doctor(const TallowbrookPaths& paths) {
    const Instant now = currentInstant();
    DiagnosticsReport report;
    report.appVersion = PayloadNormalizer::adapterVersion;
    report.helperVersion = PayloadNormalizer::adapterVersion;
    report.paths = paths;
    report.notificationAuthorization = "not needed, printed in the terminal";
    report.pendingSpoolFiles = SpoolDrainer{paths}.pendingSegmentCount();
    report.helperLogTail = DiagnosticsReport::tail(paths.helperLogFile(), logLines);
    auto store = openToLook(paths);
    if (store) addStored(report, *store, now);
    addAgents(report, store, now);
    return TerminalOutput::showAsResult(TerminalText::printableLines(report.render()) + "\n");
}

}  // namespace tallowbrook::host
