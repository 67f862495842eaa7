#include <gtest/gtest.h>

#include <set>
#include <string>

#include "HookConfigSamples.h"

namespace tallowbrook {
namespace {

// The text after an installation that must succeed.
std::string installed(const std::optional<std::string>& text,
                      const HookInstallSpec& spec = sampleSpec()) {
    const auto result = HookConfigMerger::install(text, spec);
    EXPECT_EQ(failureOf(result), "");
    return result.value_or("");
}

// Whatever was in the file: after it, everything is there, and once more changes nothing.
void expectComplete(const std::string& text, const HookInstallSpec& spec = sampleSpec()) {
    EXPECT_EQ(HookConfigMerger::inspect(text, spec), HookInstallState::installed()) << text;
    EXPECT_EQ(HookConfigMerger::install(text, spec), text);
}

const std::string newStart = groupOf(exactHandler);
const std::string newStop = groupOf(exactHandlerWithoutTimeout);

TEST(HookInstallation, intoNothingMakesAFileWithTheHooksAlone) {
    const std::string whole = laidOut(installedConfig) + "\n";
    EXPECT_EQ(installed(std::nullopt), whole);
    EXPECT_EQ(installed(""), whole);
    expectComplete(whole);
    expectComplete(" \t" + installedConfig + "\r\n");  // not rewritten in our layout

    const auto renamed = HookInstallSpec::claudeCode("/opt/renamed-helper");
    expectComplete(installed(std::nullopt, renamed), renamed);
    auto withoutEvents = sampleSpec();
    withoutEvents.events.clear();
    EXPECT_EQ(installed(std::nullopt, withoutEvents), "");
    EXPECT_EQ(installed(" {} ", withoutEvents), " {} ");
}

// The whole file with `handler` for each event that is asked for, with a timeout where it gets one.
void expectInstalled(const HookInstallSpec& spec, const std::string& handler,
                     const std::set<std::string>& withoutTimeout) {
    std::string events;
    for (const auto& event : spec.events) {
        const auto* timeout = withoutTimeout.contains(event) ? "}" : R"(,"timeout":5})";
        events += (events.empty() ? "" : ",") + eventOf(event, groupOf(handler + timeout));
    }
    const auto text = installed(std::nullopt, spec);
    EXPECT_EQ(text, laidOut(configOf(events)) + "\n");
    expectComplete(text, spec);
}

TEST(HookInstallation, writesForEachAgentItsOwnFormOfHandler) {
    expectInstalled(HookInstallSpec::claudeCode("/o'neil/tallowbrook-hook"),
                    R"({"type":"command","command":"/o'neil/tallowbrook-hook",)"
                    R"("args":["claude-code"])",
                    {"SessionEnd"});
    expectInstalled(HookInstallSpec::codex("/a b/tallowbrook-hook"),
                    R"({"type":"command","command":"'/a b/tallowbrook-hook' codex")",
                    {"SessionEnd", "Interrupt"});
}

TEST(HookInstallation, goesBehindWhatIsThere) {
    EXPECT_EQ(installed(R"({"z":1.0,"hooks":{"Stop":[)" + groupOf(foreignHandler) +
                        R"(],"Other":[]},"a":"\u0041"})"),
              laidOut(R"({"z":1.0,"hooks":{"Stop":[)" + groupOf(foreignHandler) + "," + newStop +
                      R"(],"Other":[],)" + eventOf("Start", newStart) + R"(},"a":"\u0041"})"));
    EXPECT_EQ(installed(R"({"model":"x"})"),
              laidOut(R"({"model":"x",)" + installedConfig.substr(1)));
    EXPECT_EQ(installed(R"({"hooks":{},"model":"x"})"),
              laidOut(installedConfig.substr(0, installedConfig.size() - 1) + R"(,"model":"x"})"));
    EXPECT_EQ(installed(R"({"hooks":{"Stop":[],"Start":[{"matcher":"x"}]}})"),
              laidOut(configOf(eventOf("Stop", newStop) + "," +
                               eventOf("Start", R"({"matcher":"x"},)" + newStart))));
}

TEST(HookInstallation, takesAnEventForTheSameHoweverItsNameWasWritten) {
    const auto text = R"({"h\u006foks":{"St\u0061rt":[],"Stop":[)" + newStop + "]}}";
    EXPECT_EQ(installed(text), laidOut(R"({"h\u006foks":{"St\u0061rt":[)" + newStart +
                                       R"(],"Stop":[)" + newStop + "]}}"));
}

TEST(HookInstallation, replacesStaleHandlersOfEveryEvent) {
    EXPECT_EQ(installed(configOf(eventOf("Start", groupOf(staleHandler)) + "," +
                                 eventOf("Stop", newStop))),
              laidOut(configOf(eventOf("Stop", newStop) + "," + eventOf("Start", newStart))))
        << "an event that the removal empties is made anew at the end";
    EXPECT_EQ(installed(configOf(eventOf("Unknown", groupOf(staleHandler)) + "," +
                                 installedConfig.substr(10, installedConfig.size() - 12))),
              laidOut(installedConfig))
        << "also of events that are not wanted";
    EXPECT_EQ(installed(configOf(eventOf("Start", groupOf(staleHandler + "," + exactHandler + "," +
                                                          staleHandler)) +
                                 "," + eventOf("Stop", newStop))),
              laidOut(installedConfig))
        << "an exact one among them stays";
}

TEST(HookInstallation, keepsForeignHandlersOfAGroupThatHadOurs) {
    const std::string other = R"({"type":"command","command":"say hi","timeout":1.50})";
    EXPECT_EQ(installed(configOf(eventOf("Start", R"({"matcher":"*","hooks":[)" + foreignHandler +
                                                      "," + staleHandler + "," + other +
                                                      R"(],"x":1},)" + groupOf(staleHandler)) +
                                 "," + eventOf("Stop", newStop))),
              laidOut(configOf(eventOf("Start", R"({"matcher":"*","hooks":[)" + foreignHandler +
                                                    "," + other + R"(],"x":1},)" + newStart) +
                               "," + eventOf("Stop", newStop))));
}

TEST(HookInstallation, keepsWhatWasEmptyBefore) {
    EXPECT_EQ(installed(configOf(R"("Empty":[],"Other":[{},{"hooks":[]}],)" +
                                 eventOf("Gone", groupOf(staleHandler)))),
              laidOut(configOf(R"("Empty":[],"Other":[{},{"hooks":[]}],)" +
                               eventOf("Start", newStart) + "," + eventOf("Stop", newStop))));
}

TEST(HookInstallation, endsTheFileAsItEndedBefore) {
    const auto whole = laidOut(installedConfig);
    EXPECT_EQ(installed("{}"), whole);
    EXPECT_EQ(installed("{}\n"), whole + "\n");
    EXPECT_EQ(installed("{}\n\n"), whole + "\n");
    EXPECT_EQ(installed("{}\r\n"), whole + "\n");
    EXPECT_EQ(installed("{} "), whole);
    EXPECT_EQ(installed(" "), whole) << "blank, but not empty";
    EXPECT_EQ(installed("\n"), whole + "\n");
}

}  // namespace
}  // namespace tallowbrook
