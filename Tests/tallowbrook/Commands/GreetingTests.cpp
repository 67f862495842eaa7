#include "Commands/Greeting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Output/TimeText.h"

namespace tallowbrook::host {
namespace {

using State = AgentHealth::State;

const Instant now = currentInstant();
const std::string since = TimeText::shortTime(now, now);

TEST(Greeting, namesTheAgentsThatAreSetUp) {
    EXPECT_EQ(
        greeting({{Provider::claudeCode, State::receiving}, {Provider::codexCLI, State::waiting}},
                 {}, now),
        "Watching Claude Code and Codex CLI since " + since + ". Ctrl-C ends.\n");
    EXPECT_EQ(
        greeting({{Provider::claudeCode, State::silent}, {Provider::codexCLI, State::notSetUp}}, {},
                 now),
        "Watching Claude Code since " + since + ". Ctrl-C ends.\n");
}

TEST(Greeting, saysWhereNoneIsSetUp) {
    EXPECT_EQ(
        greeting({{Provider::claudeCode, State::notSetUp}, {Provider::codexCLI, State::notSetUp}},
                 {}, now),
        "No agent is set up: run \"tallowbrook setup\" in another terminal.\n");
}

TEST(Greeting, saysWhichAgentHasToBeSetUpAgain) {
    for (const auto state : {State::partial, State::needsRepair, State::unreadable})
        EXPECT_EQ(greeting({{Provider::claudeCode, State::receiving}, {Provider::codexCLI, state}},
                           {}, now),
                  "Watching Claude Code and Codex CLI since " + since +
                      ". Ctrl-C ends.\n"
                      "Codex CLI needs repair: \"tallowbrook health\" says why.\n");
}

TEST(Greeting, saysWhatIsMutedInThreeLinesAtMost) {
    const std::vector muted{Sentence{"Quiet"}, Sentence{"Not told"}};
    EXPECT_EQ(greeting({{Provider::claudeCode, State::receiving}}, muted, now),
              "Watching Claude Code since " + since + ". Ctrl-C ends.\nQuiet.\nNot told.\n");
    EXPECT_EQ(greeting({{Provider::claudeCode, State::partial}}, muted, now),
              "Watching Claude Code since " + since +
                  ". Ctrl-C ends.\nClaude Code needs repair: \"tallowbrook health\" says why.\n"
                  "Quiet.\n");
    EXPECT_THAT(greetingOfAnotherHome(muted, now), testing::EndsWith("\nQuiet.\nNot told.\n"));
}

}  // namespace
}  // namespace tallowbrook::host
