#include "Setup/AgentHealth.h"

#include <gtest/gtest.h>

#include "Support/FileContents.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

using enum AgentHealth::State;
using std::chrono::seconds;

struct HealthOfAnAgent : testing::Test {
    TemporaryDirectory directory;
    TallowbrookPaths paths{directory.path / "data"};
    Agent agent{Provider::claudeCode, directory.path / "settings.json", true};

    void SetUp() override { setUp(paths); }

    void setUp(const TallowbrookPaths& home) const {
        const auto plan = IntegrationSetup::planInstall(agent.provider, agent.configFile,
                                                        home.installedHelper().string());
        ASSERT_TRUE(plan);
        writeContents(agent.configFile, plan->proposedText.value());
    }

    AgentHealth look(HelperStatus helper = HelperStatus::current) const {
        return AgentHealth::of(agent, paths, helper,
                               {directory.path / "none", directory.path / "none"});
    }
};

TEST_F(HealthOfAnAgent, isReadyWithAnyHelperThatCanRun) {
    struct Row {
        HelperStatus helper;
        AgentHealth::State state;
    };
    for (const auto& [helper, state] : {
             Row{HelperStatus::current, waiting},
             Row{HelperStatus::outdated, waiting},
             Row{HelperStatus::missing, needsRepair},
             Row{HelperStatus::notExecutable, needsRepair},
         })
        EXPECT_EQ(look(helper).state(), state) << rawValue(helper);
}

TEST_F(HealthOfAnAgent, isThatOfItsFile) {
    auto partialText = contentsOf(agent.configFile);
    partialText.replace(partialText.find("\"Stop\""), 6, "\"Halt\"");
    struct Row {
        std::string text;
        AgentHealth::State state;
        bool needsAttention;
    };
    for (const auto& [text, state, needsAttention] : {
             Row{"", notSetUp, false},
             Row{"{}", notSetUp, false},
             Row{partialText, partial, true},
             Row{"[]", unreadable, true},
             Row{"\xFF", unreadable, true},
         }) {
        writeContents(agent.configFile, text);
        EXPECT_EQ(look().state(), state) << text;
        EXPECT_EQ(look().needsAttention(), needsAttention) << text;
    }
    std::filesystem::remove(agent.configFile);
    EXPECT_EQ(look().state(), notSetUp);
    setUp(TallowbrookPaths{directory.path / "elsewhere"});
    EXPECT_EQ(look().state(), needsRepair);
}

TEST_F(HealthOfAnAgent, goesByWhatCameSinceTheSetup) {
    struct Row {
        const char* why;
        IntegrationHealthRecord record;
        AgentHealth::State state;
        bool needsAttention;
    };
    const auto now = sampleTime;
    const auto setUpAt = now - seconds{600};
    for (const auto& [why, record, state, needsAttention] : {
             Row{"never seen before", {}, waiting, false},
             Row{"not for long", {setUpAt + seconds{1}, {}}, waiting, false},
             Row{"for long", {setUpAt, {}}, silent, true},
             Row{"an older event", {setUpAt, setUpAt - seconds{1}}, silent, true},
             Row{"an event", {setUpAt, setUpAt}, receiving, false},
         }) {
        auto health = look();
        auto updated = record;
        health.judgeEvents(updated, now);
        EXPECT_EQ(health.state(), state) << why;
        EXPECT_EQ(health.needsAttention(), needsAttention) << why;
    }
}

TEST_F(HealthOfAnAgent, isBlockedWhereTheAgentRunsNoHooksWhateverCameBefore) {
    auto text = contentsOf(agent.configFile);
    writeContents(agent.configFile, text.replace(0, 1, "{\"disableAllHooks\": true, "));
    IntegrationHealthRecord record{sampleTime - seconds{600}, sampleTime};
    auto health = look();
    health.judgeEvents(record, sampleTime);
    EXPECT_EQ(health.state(), blocked);
    EXPECT_TRUE(health.needsAttention());
    EXPECT_EQ(look(HelperStatus::missing).state(), needsRepair);
}

TEST_F(HealthOfAnAgent, isBlockedByMissingTrustOnlyUntilAnEventComes) {
    agent = {Provider::codexCLI, directory.path / "hooks.json", true};
    setUp(paths);
    EXPECT_EQ(look().state(), blocked);
    IntegrationHealthRecord record{sampleTime - seconds{600}, std::nullopt};
    auto health = look();
    health.judgeEvents(record, sampleTime);
    EXPECT_EQ(health.state(), blocked);
    record.noteLiveEvent(sampleTime);
    health.judgeEvents(record, sampleTime);
    EXPECT_EQ(health.state(), receiving);
}

TEST_F(HealthOfAnAgent, forgetsTheSetupOnlyWhereTheHooksAreSeenToBeGone) {
    const IntegrationHealthRecord stored{sampleTime, sampleTime};
    for (const std::string text : {"{}", "[]"}) {
        writeContents(agent.configFile, text);
        auto record = stored;
        look().judgeEvents(record, sampleTime);
        EXPECT_EQ(record.setUpAt.has_value(), text == "[]");
        EXPECT_EQ(record.lastLiveEventAt, stored.lastLiveEventAt);
    }
}

}  // namespace
}  // namespace tallowbrook::host
