#include "Commands/DoctorCommand.h"

#include <fmt/core.h>

#include <map>
#include <optional>

#include "Channels/ChannelLadder.h"
#include "Channels/LinesChannel.h"
#include "Commands/CommandLine.h"
#include "Commands/DatabaseDoor.h"
#include "Commands/EditorsCommand.h"
#include "Commands/HostRow.h"
#include "Commands/SessionChoice.h"
#include "Diagnostics/DiagnosticsReport.h"
#include "EventBridge/SpoolDrainer.h"
#include "EventIngestion/PayloadNormalizer.h"
#include "Focus/BoundedRun.h"
#include "Lists/SessionList.h"
#include "Output/ExitStatus.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Preferences/HostSettings.h"
#include "Setup/AgentHealth.h"
#include "Setup/ProgramLocation.h"
#include "Store/SessionStore.h"
#include "Store/Settings.h"

namespace tallowbrook::host {
namespace {

// Enough to show what keeps going wrong, and few enough to read through before pasting.
constexpr std::size_t logLines = 10;

// Absent when the database fails; empty where nothing was ever stored.
using Records = std::optional<std::map<Provider, IntegrationHealthRecord>>;

// A database that fails is part of what the report is for.
Records addStored(DiagnosticsReport& report, std::vector<SessionSnapshot>& running,
                  const TallowbrookPaths& paths, Instant now) {
    Records records{std::in_place};
    const auto read = tryDatabaseIfAny(paths, [&](Database* database) {
        if (database == nullptr) return;
        SessionStore store{*database};
        report.storedEventCount = store.eventCount();
        report.lastEventAt = store.newestEventAt();
        for (auto& session : listedSessions(*database, ListScope::all, now).sessions) {
            ++report.sessionCountsByStatus[std::string{rawValue(session.status)}];
            const bool isRecent = now - session.snapshot.lastSeenAt <= listedFor;
            if (isRecent && !session.snapshot.sessionEnded)
                running.push_back(std::move(session.snapshot));
        }
        Settings settings{*database};
        for (const auto provider : allCases<Provider>())
            records->emplace(provider, settings.integrationHealth(provider));
    });
    if (read) return records;
    StandardStreams::complain(read.error());
    // Shown as unavailable, since half of the numbers would mislead.
    report.storedEventCount.reset();
    return std::nullopt;
}

std::optional<std::string> versionOf(const std::string& executable) {
    constexpr Seconds timeout{3};
    constexpr std::int64_t maxOutputBytes = 65536;
    const auto result = runBounded(executable, {"--version"}, timeout, maxOutputBytes);
    if (!result || result->status != 0) return std::nullopt;
    return ProviderDetector::sanitizeVersion(result->output);
}

void addAgents(DiagnosticsReport& report, const Records& records, Instant now) {
    auto detector = agentDetector();
    detector.versionProbe = versionOf;
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
        if (health.state() == AgentHealth::State::blocked)
            report.integrationHealth[agent.provider] = health.obstacle->text();
        else if (auto text = health.events.diagnosticDescription())
            report.integrationHealth[agent.provider] = std::move(*text);
    }
}

std::string channelRows(const TallowbrookPaths& paths) {
    ChannelChoice choice;
    // A database that fails was complained of before.
    [[maybe_unused]] const auto read = tryDatabaseIfAny(paths, [&](Database* database) {
        if (database != nullptr) choice = Settings{*database}.preferences().host.channels;
    });
    auto channels = makeLadder();
    channels.insert(channels.begin(), makeLinesChannel());
    findOut(choice, channels);
    auto text = fmt::format("You are told by ({}):\n", choice.text());
    for (const auto& [name, isChosen, reason] : channelReports(choice, channels))
        text += fmt::format("  {}: {} · {}\n", name, isChosen ? "used" : "not used", reason);
    return text;
}

}  // namespace

int doctor(const TallowbrookPaths& paths) {
    const Instant now = currentInstant();
    DiagnosticsReport report;
    report.appVersion = PayloadNormalizer::adapterVersion;
    report.helperVersion = PayloadNormalizer::adapterVersion;
    report.paths = paths;
    // None of the channels asks the system for one.
    report.notificationAuthorization = "not needed";
    report.pendingSpoolFiles = SpoolDrainer{paths}.pendingSegmentCount();
    report.helperLogTail = DiagnosticsReport::tail(paths.helperLogFile(), logLines);
    std::vector<SessionSnapshot> running;
    addAgents(report, addStored(report, running, paths, now), now);
    const auto host = HostLock::holder(paths);
    const int shown = StandardStreams::showAsResult(
        PrintableText::printableLines(report.render() + "\n" + channelRows(paths)) + "\n" +
        editorReport(running) + hostRow(host, now));
    return shown == ExitStatus::done && !host ? ExitStatus::noHost : shown;
}

void addDoctorCommand(CommandLine& line) {
    line.add("doctor", "Report what is installed and stored, for a request for help", doctor,
             "4: the report is whole, but no host runs, so nobody is told anything.");
}

}  // namespace tallowbrook::host
