#include "Terminal/TerminalHost.h"

#include <set>

#include "Terminal/TerminalLocation.h"

namespace tallowbrook {

std::vector<TerminalHost::ProcessPair> TerminalHost::processesOnTTY(const std::string& tty,
                                                                    const Lookup& lookup) {
    if (!ControllingTerminal::sanitize(tty)) return {};
    const auto terminal = TerminalDevice::parse(tty);
    const auto device = terminal ? lookup.deviceNumber(*terminal) : std::nullopt;
    if (!device) return {};
    std::vector<ProcessPair> pairs;
    for (const ProcessRecord& record : lookup.processesOnDevice(*device))
        pairs.push_back({record.pid, record.parentPID});
    return pairs;
}

std::optional<pid_t> TerminalHost::hostPID(const std::vector<ProcessPair>& processes) {
    std::set<pid_t> onTerminal;
    for (const ProcessPair& process : processes) onTerminal.insert(process.pid);

    const ProcessPair* lowest = nullptr;
    for (const ProcessPair& process : processes) {
        // An orphan, adopted by process 1, tells nothing of the host.
        if (process.ppid < 2 || onTerminal.contains(process.ppid)) continue;
        // The shell came first and has the lowest number, but where numbers have wrapped around.
        if (lowest == nullptr || process.pid < lowest->pid) lowest = &process;
    }
    if (lowest == nullptr) return std::nullopt;
    return lowest->ppid;
}

std::vector<TerminalHost::Process> TerminalHost::hostChain(const std::string& tty,
                                                           const Lookup& lookup) {
    std::vector<Process> chain;
    pid_t current = hostPID(processesOnTTY(tty, lookup)).value_or(0);
    // The table is read while it changes: a loop of parents must end too.
    while (current > 1 && chain.size() < maxDepth) {
        const auto record = lookup.process(current);
        if (!record) break;
        chain.push_back({current, record->name});
        current = record->parentPID;
    }
    return chain;
}

bool TerminalHost::isTmux(const std::vector<Process>& chain) {
    return !chain.empty() && chain.front().name == "tmux";
}

}  // namespace tallowbrook
