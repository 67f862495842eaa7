#include "Commands/DoctorCommand.h"

#include <map>
#include <optional>

#include "Commands/StoreCommand.h"
#include "Diagnostics/DiagnosticsReport.h"
#include "EventBridge/SpoolDrainer.h"
#include "EventIngestion/PayloadNormalizer.h"
#include "Integrations/ProviderDetector.h"
#include "Lists/SessionList.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Setup/AgentHealth.h"
#include "Setup/ProgramLocation.h"

namespace tallowbrook::host {
namespace {

// Enough to show what keeps going wrong, and few enough to read through before pasting.
constexpr std::size_t logLines = 10;

void addStored(DiagnosticsReport& report, EventStore& store, Instant now) {
    try {
        report.storedEventCount = store.eventCount();
        report.lastEventAt = store.newestEventAt();
        for (const auto& session :
             SessionList::make(store.sessions(), ListScope::all, now).sessions)
            ++report.sessionCountsByStatus[std::string{rawValue(session.status)}];
    } catch (const SQLite::Exception&) {
        // Shown as unavailable, since half of the numbers would mislead.
        report.storedEventCount.reset();
    }
}

// Absent when the store cannot be read; empty where nothing was ever stored.
using Records = std::optional<std::map<Provider, IntegrationHealthRecord>>;

Records readRecords(std::optional<EventStore>& store) {
    Records records{std::in_place};
    if (!store) return records;
    try {
        for (const auto provider : allCases<Provider>())
            records->emplace(provider, store->integrationHealth(provider));
    } catch (const SQLite::Exception&) {
        return std::nullopt;
    }
    return records;
}

void addAgents(DiagnosticsReport& report, const Records& records, Instant now) {
    const auto detector = ProviderDetector::live(true);
    const auto helper = IntegrationSetup::helperStatus(report.paths.installedHelper(),
                                                       bundledHelper().value_or(""));
    for (const auto& agent : allAgents()) {
        auto detection = detector.detect(agent.provider);
        // The detector does not know where the user has moved the file to.
        detection.hookConfigPath = agent.configFile.string();
        report.detections.push_back(std::move(detection));

        auto health = AgentHealth::of(agent, report.paths, helper);
        // What has come is not known then.
        if (!records && health.isReady) continue;
        if (records && records->contains(agent.provider)) {
            auto record = records->at(agent.provider);
            health.judgeEvents(record, now);
        }
        report.integrationStates[agent.provider] = rawValue(health.state());
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
    // No permission is asked of the system for text in a terminal.
    report.notificationAuthorization = "not needed, printed in the terminal";
    report.pendingSpoolFiles = SpoolDrainer{paths}.pendingSegmentCount();
    report.helperLogTail = DiagnosticsReport::tail(paths.helperLogFile(), logLines);
    // A store that fails is part of what the report is for.
    auto store = openIfAny(paths);
    if (store && *store) addStored(report, **store, now);
    addAgents(report, store ? readRecords(*store) : std::nullopt, now);
    return StandardStreams::showAsResult(PrintableText::printableLines(report.render()) + "\n");
}

}  // namespace tallowbrook::host
