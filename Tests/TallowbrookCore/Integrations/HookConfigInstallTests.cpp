#include <gtest/gtest.h>

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
}

TEST(HookInstallation, ofClaudeCodeReadsLikeThis) {
    const auto text = installed(std::nullopt, HookInstallSpec::claudeCode("/o'neil/x"));
    EXPECT_TRUE(text.starts_with(R"({
  "hooks": {
    "SessionStart": [
      {
        "hooks": [
          {
            "type": "command",
            "command": "/o'neil/x",
            "args": [
              "claude-code"
            ],
            "timeout": 5
          }
        ]
      }
    ],
    "UserPromptSubmit": [
)")) << text;
    EXPECT_TRUE(text.ends_with(R"(    "SessionEnd": [
      {
        "hooks": [
          {
            "type": "command",
            "command": "/o'neil/x",
            "args": [
              "claude-code"
            ]
          }
        ]
      }
    ]
  }
}
)")) << text;
}

TEST(HookInstallation, ofCodexReadsLikeThis) {
    const auto spec = HookInstallSpec::codex("/a b/tallowbrook-hook");
    std::string events;
    for (const auto& event : spec.events) {
        const bool hasTimeout = event != "Interrupt" && event != "SessionEnd";
        events += (events.empty() ? "" : ",") +
                  eventOf(event, groupOf(R"({"type":"command",)"
                                         R"("command":"'/a b/tallowbrook-hook' codex")" +
                                         std::string{hasTimeout ? R"(,"timeout":5})" : "}"}));
    }
    const auto text = installed(std::nullopt, spec);
    EXPECT_EQ(text, laidOut(configOf(events)) + "\n");
    expectComplete(text, spec);
}

TEST(HookInstallation, onceMoreGivesTheTextBackByteForByte) {
    for (const auto& text : {installedConfig, " \t" + installedConfig + "\r\n",
                             laidOut(installedConfig), laidOut(installedConfig) + "\n"}) {
        EXPECT_EQ(installed(text), text);
        EXPECT_EQ(installed(installed(text)), text);
    }
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

TEST(HookInstallation, addsOnlyWhatIsMissing) {
    EXPECT_EQ(installed(configOf(eventOf("Start", newStart))), laidOut(installedConfig));
    EXPECT_EQ(installed(configOf(eventOf("Stop", newStop))),
              laidOut(configOf(eventOf("Stop", newStop) + "," + eventOf("Start", newStart))));
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

TEST(HookInstallation, ofAHelperOfAnotherNameIsStillDoneOnce) {
    const auto spec = HookInstallSpec::claudeCode("/opt/renamed-helper");
    expectComplete(installed(std::nullopt, spec), spec);
}

TEST(HookInstallation, ofASpecWithoutEventsChangesNothing) {
    auto spec = sampleSpec();
    spec.events.clear();
    EXPECT_EQ(installed(std::nullopt, spec), "");
    EXPECT_EQ(installed(" {} ", spec), " {} ");
}

}  // namespace
}  // namespace tallowbrook
