#include "Diagnostics/DiagnosticsReport.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <string_view>
#include <utility>

#include "Diagnostics/DiagnosticLog.h"
#include "Diagnostics/OperatingSystem.h"
#include "SessionState/SessionSnapshot.h"
#include "System/FileContents.h"
#include "Text/TakeUntil.h"
#include "Text/UTF8.h"

namespace tallowbrook {
namespace {

constexpr std::size_t maxLogLines = 10;

constexpr std::array statusLabels{
    std::pair{SessionStatus::working, std::string_view{"Working"}},
    std::pair{SessionStatus::needsAttention, std::string_view{"Needs Attention"}},
    std::pair{SessionStatus::completed, std::string_view{"Completed"}},
    std::pair{SessionStatus::failed, std::string_view{"Failed"}},
    std::pair{SessionStatus::interrupted, std::string_view{"Interrupted"}},
    std::pair{SessionStatus::stale, std::string_view{"Stale"}},
    std::pair{SessionStatus::unknown, std::string_view{"Unknown"}},
};
static_assert(statusLabels.size() == sessionStatusNames.size());

// A text that comes from outside. A path may have any bytes: the home directory is found among them
// before they are made text.
std::string shown(std::string_view text,
                  std::size_t maxLength = std::numeric_limits<std::size_t>::max()) {
    return UTF8::replacingInvalid(DiagnosticLog::sanitize(text, maxLength));
}

std::string sessionSummary(const std::map<std::string, std::int64_t>& counts) {
    std::string summary;
    // In the order of the labels; a status that the host made up is not shown.
    for (const auto& [status, label] : statusLabels) {
        const auto count = counts.find(std::string{rawValue(status)});
        if (count == counts.end()) continue;
        if (!summary.empty()) summary += ", ";
        summary.append(label).append("=").append(std::to_string(count->second));
    }
    return summary.empty() ? "none" : summary;
}

std::string detectionLine(const DiagnosticsReport& report, const ProviderDetection& detection) {
    const Provider provider = detection.provider;
    std::string line{displayName(provider)};
    line.append(": ").append(rawValue(detection.state));
    if (detection.version) line += " · " + shown(*detection.version);
    if (detection.executablePath) line += " · " + shown(*detection.executablePath);
    line += " · hooks file " + shown(detection.hookConfigPath);
    if (const auto state = report.integrationStates.find(provider);
        state != report.integrationStates.end())
        line += " · integration " + shown(state->second);
    if (const auto health = report.integrationHealth.find(provider);
        health != report.integrationHealth.end())
        line += " · " + shown(health->second);
    return line;
}

// The last `count` of the lines, or all where there are fewer.
std::span<const std::string> lastOf(std::span<const std::string> lines, std::size_t count) {
    return lines.last(std::min(lines.size(), count));
}

}  // namespace

std::string DiagnosticsReport::render() const {
    std::string text = "Tallowbrook diagnostics (sanitized)";
    const auto add = [&](const std::string& line) { text.append("\n").append(line); };

    add("App " + shown(appVersion) + " · helper/adapter " + shown(helperVersion) + " · " +
        shown(OperatingSystem::description()));
    add("Data directory: " + shown(paths.home.string()));
    add("Notification permission: " + shown(notificationAuthorization));
    add("Stored events: " + (storedEventCount ? std::to_string(*storedEventCount) : "unavailable") +
        " · pending spool segments: " + std::to_string(pendingSpoolFiles));
    add("Sessions: " + sessionSummary(sessionCountsByStatus));
    add("Last event: " + (lastEventAt ? EventDate::text(*lastEventAt) : "never"));
    for (const auto& detection : detections) add(detectionLine(*this, detection));

    if (!helperLogTail.empty()) add("Recent helper diagnostics:");
    for (const auto& line : lastOf(helperLogTail, maxLogLines))
        add("  " + shown(line, DiagnosticLog::maxMessageLength));
    return text;
}

std::vector<std::string> DiagnosticsReport::tail(const std::filesystem::path& file,
                                                 std::size_t lines) {
    const auto text = FileContents::read(file);
    // What is not text is no log of ours: none of it goes into a report that others read.
    if (!text || !UTF8::isValid(*text)) return {};
    std::vector<std::string> found;
    std::string_view rest = *text;
    while (!rest.empty())
        if (const auto line = takeUntil(rest, '\n'); !line.empty()) found.emplace_back(line);
    const auto tail = lastOf(found, lines);
    return {tail.begin(), tail.end()};
}

}  // namespace tallowbrook
