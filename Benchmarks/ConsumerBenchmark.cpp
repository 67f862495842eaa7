// The consumer's steps, each beside what its work costs at the least. Google Benchmark runs the
// pairs in random interleaving; the claims are ratios of their medians.
#include <SQLiteCpp/SQLiteCpp.h>
#include <benchmark/benchmark.h>
#include <fmt/core.h>

#include <boost/json/parse.hpp>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>

#include "Channels/LinesChannel.h"
#include "Claim.h"
#include "Domain/EventCoding.h"
#include "MedianReporter.h"
#include "Preferences/HostSettings.h"
#include "SampleSegment.h"
#include "SessionState/SessionReducer.h"
#include "Watch/Ingest.h"

namespace {

using namespace tallowbrook;
using namespace tallowbrook::bench;
using namespace tallowbrook::host;

// A scratch directory of the run; removed when the program ends.
const std::filesystem::path& scratch() {
    static const auto path = [] {
        std::string name = std::filesystem::temp_directory_path() / "tallowbrook-bench-XXXXXX";
        return std::filesystem::path{mkdtemp(name.data())};
    }();
    return path;
}

const std::vector<AgentEvent>& segmentEvents() {
    static const auto events = sampleEvents(5200, 12);
    return events;
}

// 2 MiB of lines.
const std::filesystem::path& segmentFile() {
    static const auto file = [] {
        const auto path = scratch() / "segment.jsonl";
        std::ofstream{path} << segmentText(segmentEvents());
        return path;
    }();
    return file;
}

void decodeSegment(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(SpoolDrainer::readEvents(segmentFile()));
}

void parseSegmentIntoTrees(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        std::ifstream stream{segmentFile(), std::ios::binary};
        std::vector<boost::json::value> trees;
        std::string line;
        while (std::getline(stream, line)) trees.push_back(boost::json::parse(line));
        benchmark::DoNotOptimize(trees);
    }
}

// A session in the middle of its work, with every text that a live one has.
SessionSnapshot busySnapshot() {
    const SessionReducer reducer{duplicateWindow};
    std::optional<SessionSnapshot> snapshot;
    for (const auto& event : sampleEvents(40, 1))
        snapshot = reducer.reduce(std::move(snapshot), event).current;
    return *snapshot;
}

void reduce(benchmark::State& state) {
    const SessionReducer reducer{duplicateWindow};
    auto events = sampleEvents(64, 1);
    std::optional<SessionSnapshot> snapshot = busySnapshot();
    Instant now = currentInstant();
    auto next = events.begin();
    for ([[maybe_unused]] auto _ : state) {
        if (next == events.end()) next = events.begin();
        auto& event = *next++;
        // Later than all before it, or it would take the short way of one that comes too late.
        event.observedAt = now += std::chrono::seconds{3};
        auto result = reducer.reduce(std::move(snapshot), event);
        snapshot = std::move(result.current);
        benchmark::DoNotOptimize(result);
    }
}

void copySnapshotThreeTimes(benchmark::State& state) {
    const SessionSnapshot snapshot = busySnapshot();
    for ([[maybe_unused]] auto _ : state) {
        for (int i = 0; i < 3; ++i) {
            SessionSnapshot copy = snapshot;
            benchmark::DoNotOptimize(copy);
        }
    }
}

// Gives every event a new id, so that the store takes them as new.
std::vector<AgentEvent> renewed(std::vector<AgentEvent> events) {
    for (auto& event : events) event.id = randomUUID().value();
    return events;
}

// Whatever lies in the spool; what is due is to be told by one channel.
IngestReport ingestSpool(const TallowbrookPaths& paths, Database& store) {
    const Ingest ingest{defaultPreferences(), Calendar::current(), {std::string{linesChannelName}}};
    return ingest.run(EventSource::spool({paths}), store, currentInstant());
}

void ingestSegment(benchmark::State& state) {
    static int run = 0;
    const TallowbrookPaths paths{scratch() / fmt::format("ingest-{}", run++)};
    auto store = Database::open(paths).value();
    std::filesystem::create_directories(paths.spoolDirectory());
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        std::ofstream{paths.spoolDirectory() / "ingest-1-1-A.jsonl"}
            << segmentText(renewed(segmentEvents()));
        state.ResumeTiming();
        benchmark::DoNotOptimize(ingestSpool(paths, store));
    }
}

// The same rows with the same durability, and nothing else.
void insertRows(benchmark::State& state) {
    static int run = 0;
    const TallowbrookPaths paths{scratch() / fmt::format("insert-{}", run++)};
    {
        const auto schema = Database::open(paths).value();
    }
    SQLite::Database database{paths.databaseFile().string(), SQLite::OPEN_READWRITE};
    database.exec("PRAGMA synchronous = FULL");
    database.exec("INSERT INTO sessions (storage_id, snapshot) VALUES ('s', '{}')");
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        const auto events = renewed(segmentEvents());
        std::vector<std::string> records;
        for (const auto& event : events) records.push_back(EventCoding::encodeLine(event));
        state.ResumeTiming();
        SQLite::Transaction transaction{database, SQLite::TransactionBehavior::IMMEDIATE};
        SQLite::Statement insert{
            database,
            "INSERT INTO events (id, session, observed_at, effect, record) VALUES (?, 1, ?, ?, ?)"};
        for (std::size_t i = 0; i < events.size(); ++i) {
            insert.bind(1, &events[i].id, static_cast<int>(events[i].id.size()));
            insert.bind(2, events[i].observedAt.time_since_epoch().count());
            insert.bind(3, "confirmed");
            insert.bindNoCopy(4, records[i]);
            insert.exec();
            insert.reset();
        }
        transaction.commit();
    }
}

// A store that holds `count` events already; filled once.
Database& filledStore(std::int64_t count) {
    static std::map<std::int64_t, Database> stores;
    if (const auto found = stores.find(count); found != stores.end()) return found->second;
    const TallowbrookPaths paths{scratch() / fmt::format("filled-{}", count)};
    auto& store = stores.emplace(count, Database::open(paths).value()).first->second;
    std::filesystem::create_directories(paths.spoolDirectory());
    for (std::int64_t stored = 0; stored < count; stored += 1000) {
        std::ofstream{paths.spoolDirectory() / "ingest-1-1-A.jsonl"}
            << segmentText(sampleEvents(1000, 12));
        ingestSpool(paths, store);
    }
    return store;
}

void ingestIntoFilledStore(benchmark::State& state) {
    auto& store = filledStore(state.range(0));
    const TallowbrookPaths paths{scratch() / fmt::format("filled-{}", state.range(0))};
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        std::ofstream{paths.spoolDirectory() / "ingest-1-1-A.jsonl"}
            << segmentText(sampleEvents(1000, 12));
        state.ResumeTiming();
        benchmark::DoNotOptimize(ingestSpool(paths, store));
    }
}

BENCHMARK(decodeSegment)->Unit(benchmark::kMillisecond);
BENCHMARK(parseSegmentIntoTrees)->Unit(benchmark::kMillisecond);
BENCHMARK(reduce);
BENCHMARK(copySnapshotThreeTimes);
BENCHMARK(ingestSegment)->Unit(benchmark::kMillisecond)->Iterations(4)->UseRealTime();
BENCHMARK(insertRows)->Unit(benchmark::kMillisecond)->Iterations(4)->UseRealTime();
// The log is checkpointed every third time or so: enough iterations to have several of these.
BENCHMARK(ingestIntoFilledStore)
    ->Arg(1'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(12)
    ->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::filesystem::remove_all(scratch());
    return report({
        {"decoding a segment, times Boost.JSON parsing it into trees",
         reporter.ratio("decodeSegment", "parseSegmentIntoTrees"), 1.3},
        {"one reduce, times three copies of its snapshot",
         reporter.ratio("reduce", "copySnapshotThreeTimes"), 1.1},
        {"segment to commit, times SQLite inserting the same rows",
         reporter.ratio("ingestSegment", "insertRows"), 2},
        {"an event's cost at a million stored, times that at a thousand",
         reporter.ratio("ingestIntoFilledStore1000000", "ingestIntoFilledStore1000"), 1.5},
    });
}
