// Reading and merging configuration files: beside another parser that keeps the order of members,
// and over the sizes that such files can have.
#include <benchmark/benchmark.h>
#include <fmt/core.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "Claim.h"
#include "Integrations/HookConfigMerger.h"
#include "MedianReporter.h"

namespace {

using namespace tallowbrook;
using namespace tallowbrook::bench;

// A group of hooks as users write them, with its share of escapes, numbers and other letters.
std::string group(std::size_t number) {
    return fmt::format(
        R"(      {{
        "matcher": "Edit|Write|mcp__server_{0}__.*",
        "hooks": [
          {{
            "type": "command",
            "command": "cd \"$CLAUDE_PROJECT_DIR\" && ./scripts/check.sh --file {0} # prüfen",
            "timeout": {0}.50,
            "enabled": true
          }}
        ]
      }})",
        number);
}

// A settings file of at least `size` bytes.
std::string settings(std::size_t size) {
    std::string text = "{\n  \"model\": \"x\",\n  \"hooks\": {\n    \"PostToolUse\": [\n";
    for (std::size_t i = 0; text.size() < size; ++i) text += (i > 0 ? ",\n" : "") + group(i);
    return text + "\n    ]\n  }\n}\n";
}

// One object of `size` bytes, or arrays of small ones.
std::string members(std::size_t size, std::size_t membersPerObject) {
    std::string text = "[{";
    for (std::size_t i = 0; text.size() < size; ++i) {
        if (i > 0) text += i % membersPerObject == 0 ? "},\n{" : ",\n";
        text += fmt::format(R"("permission {}": "allow")", i);
    }
    return text + "}]\n";
}

const std::string& settingsOnce(std::size_t size) {
    static std::map<std::size_t, std::string> texts;
    auto& text = texts[size];
    if (text.empty()) text = settings(size);
    return text;
}

void parse(benchmark::State& state, const std::string& text) {
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(OrderedJSON::parse(text));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void parseSettings(benchmark::State& state) {
    parse(state, settingsOnce(static_cast<std::size_t>(state.range(0))));
}

void parseSettingsWithNlohmann(benchmark::State& state) {
    const auto& text = settingsOnce(static_cast<std::size_t>(state.range(0)));
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(nlohmann::ordered_json::parse(text));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

constexpr std::size_t megabyte = 1'000'000;

void parseSmallObjects(benchmark::State& state) {
    static const auto text = members(megabyte, 10);
    parse(state, text);
}

void parseOneLargeObject(benchmark::State& state) {
    static const auto text = members(megabyte, megabyte);
    parse(state, text);
}

// A file whose one event has this many groups, each with a stale handler of ours.
std::string staleGroups(std::int64_t count) {
    const std::string group =
        R"({"hooks":[{"type":"command","command":"/old/tallowbrook-hook claude-code"}]})";
    std::string groups = group;
    for (std::int64_t i = 1; i < count; ++i) groups += "," + group;
    return R"({"hooks":{"Stop":[)" + groups + "]}}";
}

void mergeStaleGroups(benchmark::State& state) {
    const auto text = staleGroups(state.range(0));
    const auto spec = HookInstallSpec::claudeCode("/new/tallowbrook-hook");
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(HookConfigMerger::install(text, spec));
}

BENCHMARK(mergeStaleGroups)->Arg(5'000)->Arg(50'000)->Unit(benchmark::kMillisecond);
BENCHMARK(parseSettings)->Arg(10'000)->Arg(1'000'000)->Arg(10'000'000);
BENCHMARK(parseSettingsWithNlohmann)->Arg(1'000'000);
BENCHMARK(parseSmallObjects);
BENCHMARK(parseOneLargeObject);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return report({
        {"1 MB of JSON into an ordered tree, times nlohmann-json",
         reporter.ratio("parseSettings1000000", "parseSettingsWithNlohmann1000000"), 1},
        {"a byte of 10 MB of JSON, times one of 10 KB",
         reporter.ratio("parseSettings10000000", "parseSettings10000") / 1000, 2},
        {"1 MB of members of one object, times those of small objects",
         reporter.ratio("parseOneLargeObject", "parseSmallObjects"), 2},
        {"replacing 50 000 stale groups, times 5 000",
         reporter.ratio("mergeStaleGroups50000", "mergeStaleGroups5000"), 20},
    });
}
