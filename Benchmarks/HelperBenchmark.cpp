// The helper's whole life, side by side with a program that makes the helper's system calls and
// nothing else, and with what people use today for the same job. Runs are interleaved, so that the
// machine's mood hits all alike. An empty program shows what every start costs.
//   HelperBenchmark [RUNS]
#include <fmt/core.h>

#include <cstdlib>
#include <fstream>

#include "Claim.h"
#include "ProcessTimer.h"

namespace {

using namespace tallowbrook::bench;

// A payload as an agent sends it after reading a file of about `size` bytes.
std::string payload(std::size_t size) {
    std::string text = R"({"session_id":"f5fb4509-99d7-4dd1-904d-03e2b5d32756",)"
                       R"("cwd":"/Users/dev/Developer/proj","hook_event_name":"PostToolUse",)"
                       R"("tool_name":"Read","tool_response":{"type":"text","content":")";
    while (text.size() + 80 < size)
        text += R"(some \"source\" text in a file of the project, 64 bytes a line..\n)";
    return text + R"("}})";
}

// The system's own interpreter: a version manager's stand-in on the PATH would be measured, too.
std::string python() {
    const char* const system = "/usr/bin/python3";
    return std::filesystem::exists(system) ? system : "python3";
}

struct Contestant {
    std::string name;
    Program program;
    std::vector<double> times = {};

    double typical() const { return median(times); }
};

}  // namespace

int main(int argc, char** argv) {
    const int runs = argc > 1 ? std::atoi(argv[1]) : 1000;
    const ScratchDirectory scratch;
    const auto write = [&scratch](const char* name, std::size_t size) {
        auto file = scratch.path / name;
        std::ofstream{file} << payload(size);
        return file;
    };
    const auto small = write("2k.json", 2'000);
    const auto medium = write("100k.json", 100'000);
    const auto large = write("1m.json", 1'048'000);
    const std::string home = scratch.path / "home";
    const std::string log = scratch.path / "rival.jsonl";
    const std::string rivals = RIVALS;
    const std::vector<std::string> helper{TALLOWBROOK_HOOK, "claude-code", "--home", home};
    const std::vector<std::string> bare{BARE_HELPER, scratch.path / "bare-home"};
    std::filesystem::create_directories(scratch.path / "bare-home" / "spool");

    std::vector<Contestant> contestants{
        {"tallowbrook-hook, 2 KB", {helper, small}},
        {"its system calls alone, 2 KB", {bare, small}},
        {"tallowbrook-hook, 100 KB", {helper, medium}},
        {"its system calls alone, 100 KB", {bare, medium}},
        {"tallowbrook-hook, 1 MB", {helper, large}},
        {"its system calls alone, 1 MB", {bare, large}},
        {"bash and jq, 2 KB", {{"bash", rivals + "/append.sh", log}, small}},
        {"Python, 2 KB", {{python(), rivals + "/append.py", log}, small}},
        {"Node, 2 KB", {{"node", rivals + "/append.js", log}, small}},
        {"an empty static program", {{EMPTY_PROGRAM}}},
    };
    for (int run = 0; run < runs; ++run)
        for (auto& contestant : contestants)
            contestant.times.push_back(timeRun(contestant.program));

    fmt::print("Medians of {} runs each, interleaved:\n", runs);
    for (const auto& contestant : contestants)
        fmt::print("  {:<32} {:>9.0f} us\n", contestant.name, contestant.typical());
    const auto ratio = [&](std::size_t of, std::size_t to) {
        return contestants[of].typical() / contestants[to].typical();
    };
    return report({
        {"helper with 2 KB, times its system calls alone", ratio(0, 1), 1.15},
        {"helper with 100 KB, times its system calls alone", ratio(2, 3), 1.5},
        {"helper with 1 MB, times its system calls alone", ratio(4, 5), 3},
        {"bash and jq, times the helper", ratio(6, 0), 30, Claim::Bound::atLeast},
        {"Python, times the helper", ratio(7, 0), 30, Claim::Bound::atLeast},
        {"Node, times the helper", ratio(8, 0), 30, Claim::Bound::atLeast},
    });
}
