#include "Terminal/ProcessTable.h"

#include <stdlib.h>
#include <sys/param.h>
#include <sys/stat.h>
#include <sys/sysctl.h>

#include <array>

namespace tallowbrook {
namespace {

static_assert(sizeof(kinfo_proc) == 648);
static_assert(sizeof(kinfo_proc{}.kp_proc.p_comm) == ProcessTable::maxCommandNameBytes);

using Query = std::array<int, 4>;

// As `sysctl`: on success `size` becomes the count of bytes written, or needed without a buffer.
bool ask(Query query, kinfo_proc* records, std::size_t& size) {
    return sysctl(query.data(), static_cast<u_int>(query.size()), records, &size, nullptr, 0) == 0;
}

ProcessRecord makeRecord(const kinfo_proc& process) {
    const auto& command = process.kp_proc.p_comm;
    ProcessRecord record{.pid = process.kp_proc.p_pid,
                         .parentPID = process.kp_eproc.e_ppid,
                         .device = process.kp_eproc.e_tdev,
                         .name = ProcessTable::decodeCommandName({command, sizeof command})};
    if (record.device == NODEV) record.device.reset();
    return record;
}

}  // namespace

std::optional<ProcessRecord> ProcessTable::process(pid_t pid) {
    kinfo_proc process{};
    std::size_t size = sizeof process;
    if (!ask({CTL_KERN, KERN_PROC, KERN_PROC_PID, pid}, &process, size)) return std::nullopt;
    if (size == 0) return std::nullopt;  // how the kernel says that there is no such process
    return makeRecord(process);
}

std::vector<ProcessRecord> ProcessTable::processesOnDevice(dev_t device) {
    const Query query{CTL_KERN, KERN_PROC, KERN_PROC_TTY, device};
    std::size_t size = 0;
    if (!ask(query, nullptr, size) || size < 1) return {};

    // Processes can start between the two queries: ask for room for a few more.
    constexpr std::size_t slackRecords = 8;
    std::vector<kinfo_proc> processes(size / sizeof(kinfo_proc) + slackRecords);
    size = processes.size() * sizeof(kinfo_proc);
    if (!ask(query, processes.data(), size)) return {};
    processes.resize(size / sizeof(kinfo_proc));

    std::vector<ProcessRecord> records;
    for (const kinfo_proc& process : processes) records.push_back(makeRecord(process));
    return records;
}

std::optional<std::string> ProcessTable::deviceName(dev_t device) {
    std::array<char, MAXPATHLEN> buffer{};
    const char* name = devname_r(device, S_IFCHR, buffer.data(), static_cast<int>(buffer.size()));
    // For a device without a name some versions give its number instead, as in #C:16:0x3.
    if (name == nullptr || *name == '\0' || *name == '#' || *name == '?') return std::nullopt;
    return name;
}

}  // namespace tallowbrook
