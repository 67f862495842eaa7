#include "Focus/AgentProcessesLinux.h"

#include <algorithm>

#include "Domain/AgentProfile.h"
#include "Focus/ProcessDirectory.h"
#include "System/DirectoryListing.h"
#include "Terminal/ProcessTable.h"
#include "Text/Digits.h"

namespace tallowbrook::host {
namespace {

// No process is that many generations away from the first one.
constexpr int mostGenerations = 64;

bool isAgent(std::string_view program) {
    return std::ranges::any_of(allCases<Provider>(), [&](Provider provider) {
        return program == AgentProfile::of(provider).locations.executableName;
    });
}

}  // namespace

bool agentRunsOn(const std::string& devicePath) {
    const auto terminal = TerminalDevice::parse(devicePath);
    const auto device = terminal ? ProcessTable::deviceNumber(*terminal) : std::nullopt;
    if (!device) return false;
    return std::ranges::any_of(ProcessTable::processesOnDevice(*device),
                               [](const auto& process) { return isAgent(process.name); });
}

std::vector<pid_t> agentFamiliesIn(const std::string& directory) {
    std::vector<pid_t> family;
    for (const auto& entry : listDirectory("/proc")) {
        const auto pid = parseNumber<std::int32_t>(entry.filename().string());
        auto process = pid ? ProcessTable::process(*pid) : std::nullopt;
        if (!process || !isAgent(process->name) || directoryOfProcess(*pid) != directory) continue;
        // The table is read while it changes: a loop of parents must end too.
        for (int generation = 0; process && generation < mostGenerations; ++generation) {
            family.push_back(process->pid);
            process = ProcessTable::process(process->parentPID);
        }
    }
    return family;
}

}  // namespace tallowbrook::host
