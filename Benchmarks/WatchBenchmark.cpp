// From the start of a helper to the line that a watching host prints for its event. Nothing is
// printed before it is stored for good, so the floor is the helper's whole life and one write that
// has reached the disk; all three are measured side by side.
//   WatchBenchmark [RUNS]
#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>

#include "Claim.h"
#include "ProcessTimer.h"

namespace {

using namespace tallowbrook::bench;

// A host that watches `home`; its lines come through a pipe.
class Watch {
 public:
    explicit Watch(const std::filesystem::path& scratch) {
        const auto pipe = scratch / "printed";
        if (mkfifo(pipe.c_str(), 0600) != 0) std::exit(1);
        lines_ = open(pipe.c_str(), O_RDWR | O_CLOEXEC);
        host_ = start({.arguments = {TALLOWBROOK_HOST, "watch", "--home", scratch / "home"},
                       .standardOutput = pipe});
        awaitText("No sessions to show.\n");
    }
    ~Watch() {
        kill(host_, SIGTERM);
        waitpid(host_, nullptr, 0);
        close(lines_);
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    // Blocks until the host has printed `text`.
    void awaitText(const std::string& text) {
        while (printed_.find(text) == std::string::npos) {
            char bytes[4096];
            const ssize_t count = read(lines_, bytes, sizeof bytes);
            if (count > 0) printed_.append(bytes, static_cast<std::size_t>(count));
        }
        printed_.clear();
    }

 private:
    int lines_ = -1;
    pid_t host_ = 0;
    std::string printed_;
};

double timeToPrintedLine(Watch& watch, const Program& helper, const std::string& project) {
    const auto begin = std::chrono::steady_clock::now();
    const pid_t pid = start(helper);
    watch.awaitText(project);
    const std::chrono::duration<double, std::micro> taken =
        std::chrono::steady_clock::now() - begin;
    waitpid(pid, nullptr, 0);
    return taken.count();
}

// What one commit costs at the least: a page behind the others, brought to the disk.
class Journal {
 public:
    explicit Journal(const std::filesystem::path& path)
        : file_{open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)} {}
    ~Journal() { close(file_); }
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    double timeWrite() const {
        const std::string page(4096, 'x');
        const auto begin = std::chrono::steady_clock::now();
        if (write(file_, page.data(), page.size()) < 0 || fdatasync(file_) != 0) std::exit(1);
        const std::chrono::duration<double, std::micro> taken =
            std::chrono::steady_clock::now() - begin;
        return taken.count();
    }

 private:
    int file_;
};

}  // namespace

int main(int argc, char** argv) {
    const int runs = argc > 1 ? std::atoi(argv[1]) : 500;
    const ScratchDirectory scratch;
    const auto payload = scratch.path / "payload.json";
    const auto helperOf = [&](const char* home) {
        return Program{{TALLOWBROOK_HOOK, "claude-code", "--home", scratch.path / home}, payload};
    };
    Watch watch{scratch.path};
    std::vector<double> lineTimes;
    std::vector<double> helperTimes;
    const Journal journal{scratch.path / "journal"};
    std::vector<double> writeTimes;
    for (int run = 0; run < runs; ++run) {
        // A session of its own each time: the host tells the same thing again only later.
        const std::string project = fmt::format("project-{}-", run);
        std::ofstream{payload} << fmt::format(
            R"({{"session_id":"S{}","cwd":"/home/dev/{}","hook_event_name":"Stop"}})", run,
            project);
        lineTimes.push_back(timeToPrintedLine(watch, helperOf("home"), project));
        helperTimes.push_back(timeRun(helperOf("unwatched-home")));
        writeTimes.push_back(journal.timeWrite());
    }
    std::ranges::sort(lineTimes);
    fmt::print("Medians of {} runs each, interleaved:\n", runs);
    fmt::print("  {:<40} {:>7.0f} us (95 of 100 within {:.0f})\n",
               "from the helper's start to the line", median(lineTimes),
               lineTimes[lineTimes.size() * 95 / 100]);
    fmt::print("  {:<40} {:>7.0f} us\n", "the helper's whole life", median(helperTimes));
    fmt::print("  {:<40} {:>7.0f} us\n", "one write brought to the disk", median(writeTimes));
    const double floor = median(helperTimes) + median(writeTimes);
    return report(
        {{"from the helper's start to the line, times its floor", median(lineTimes) / floor, 2}});
}
