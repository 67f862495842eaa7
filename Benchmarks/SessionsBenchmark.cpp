// `tallowbrook sessions` over a large store, side by side with the bare query for what it
// shows.
//   SessionsBenchmark CACHE [RUNS]     the store is made once, in the folder CACHE
#include <fmt/core.h>

#include <cstdlib>

#include "Claim.h"
#include "LargeStore.h"
#include "ProcessTimer.h"

using namespace tallowbrook::bench;

int main(int argc, char** argv) {
    if (argc < 2) return fmt::print(stderr, "usage: SessionsBenchmark CACHE [RUNS]\n"), 2;
    const int runs = argc > 2 ? std::atoi(argv[2]) : 51;
    const auto paths = largeStore(argv[1]);
    const Program list{.arguments = {TALLOWBROOK_HOST, "sessions", "--home", paths.home},
                       .standardOutput = "/dev/null"};
    Program listAll = list;
    listAll.arguments.push_back("--all");
    const Program query{.arguments = {BARE_QUERY, paths.databaseFile()}};

    std::vector<double> listTimes;
    std::vector<double> listAllTimes;
    std::vector<double> queryTimes;
    for (int run = 0; run < runs; ++run) {
        listTimes.push_back(timeRun(list));
        queryTimes.push_back(timeRun(query));
        if (run % 5 == 0) listAllTimes.push_back(timeRun(listAll));
    }
    fmt::print("{} events of {} sessions; medians of {} runs each, interleaved:\n",
               largeStoreEvents, largeStoreSessions, runs);
    fmt::print("  {:<28} {:>9.1f} ms\n", "tallowbrook sessions", median(listTimes) / 1000);
    fmt::print("  {:<28} {:>9.1f} ms\n", "tallowbrook sessions --all", median(listAllTimes) / 1000);
    fmt::print("  {:<28} {:>9.1f} ms\n", "the bare query", median(queryTimes) / 1000);
    return report({{"tallowbrook sessions, times the bare query for what it shows",
                    median(listTimes) / median(queryTimes), 3}});
}
