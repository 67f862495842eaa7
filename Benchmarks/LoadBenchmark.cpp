// How many helpers may be started at once on one home before the first of them loses its event to
// the lock timeout. Doubles the number until that happens or the limit is reached.
//   LoadBenchmark [LIMIT]
#include <fmt/core.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>

#include "EventBridge/SpoolDrainer.h"
#include "ProcessTimer.h"

namespace {

using namespace tallowbrook;
using namespace tallowbrook::bench;

std::size_t eventsOf(int helpers, const std::filesystem::path& home,
                     const std::filesystem::path& payload) {
    const Program helper{{TALLOWBROOK_HOOK, "claude-code", "--home", home}, payload};
    std::vector<pid_t> pids;
    for (int i = 0; i < helpers; ++i) pids.push_back(start(helper));
    for (const pid_t pid : pids) waitpid(pid, nullptr, 0);

    const auto files = SpoolDrainer{{home}}.claimPendingFiles();
    std::size_t events = 0;
    for (const auto& file : files.value())
        events += SpoolDrainer::readEvents(file).value().events.size();
    return events;
}

}  // namespace

int main(int argc, char** argv) {
    const int limit = argc > 1 ? std::atoi(argv[1]) : 16'000;
    const ScratchDirectory scratch;
    const auto payload = scratch.path / "payload.json";
    std::ofstream{payload} << R"({"session_id":"s","hook_event_name":"Stop"})";

    for (int helpers = 250; helpers <= limit; helpers *= 2) {
        const auto home = scratch.path / std::to_string(helpers);
        const std::size_t events = eventsOf(helpers, home, payload);
        fmt::print("{:>6} helpers at once: {} events\n", helpers, events);
        if (events < static_cast<std::size_t>(helpers)) {
            fmt::print("The first lock timeout comes between {} and {} at once.\n", helpers / 2,
                       helpers);
            return 0;
        }
    }
    fmt::print("No lock timeout up to {} at once.\n", limit);
}
