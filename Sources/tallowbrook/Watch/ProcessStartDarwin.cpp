#include <sys/proc.h>
#include <sys/sysctl.h>

#include <array>

#include "Watch/ProcessStart.h"

namespace tallowbrook::host {

// Microseconds since 1970.
std::optional<std::int64_t> processStart(pid_t pid) {
    kinfo_proc process{};
    std::size_t size = sizeof process;
    std::array<int, 4> query{CTL_KERN, KERN_PROC, KERN_PROC_PID, pid};
    if (sysctl(query.data(), static_cast<u_int>(query.size()), &process, &size, nullptr, 0) != 0 ||
        size == 0 || process.kp_proc.p_stat == SZOMB)
        return std::nullopt;
    constexpr std::int64_t microsecondsPerSecond = 1'000'000;
    const timeval& start = process.kp_proc.p_starttime;
    return start.tv_sec * microsecondsPerSecond + start.tv_usec;
}

// In which form an agent notes its start on this system was never measured, so that text is left
// alone. A process that was there when the notes began is believed to be the agent: one that took
// its id over has started later. Without that time nothing is believed.
bool isStartOf(const NotedStart& noted, std::int64_t start) {
    return noted.agentsOwn && Instant{std::chrono::microseconds{start}} <= *noted.agentsOwn;
}

}  // namespace tallowbrook::host
