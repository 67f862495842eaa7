#include "Setup/HookObstacle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Integrations/IntegrationSetup.h"
#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

using testing::HasSubstr;
using Kind = HookObstacle::Kind;

struct ObstacleOfAnAgent : testing::Test {
    TemporaryDirectory directory;
    std::filesystem::path agentDirectory = directory.path / "agent";
    ManagedSettings managed{directory.path / "claude-code", directory.path / "codex"};

    // Below the test's directory.
    struct File {
        std::string name;
        std::string text;
    };

    void write(const std::vector<File>& files) const {
        for (const auto& folder : {agentDirectory, managed.claudeCode, managed.codex})
            std::filesystem::remove_all(folder);
        for (const auto& [name, text] : files) writeContents(directory.path / name, text);
    }
};

struct ObstacleOfClaudeCode : ObstacleOfAnAgent {
    std::optional<HookObstacle> obstacle() const {
        return hookObstacle({Provider::claudeCode, agentDirectory / "settings.json", true},
                            managed);
    }
};

TEST_F(ObstacleOfClaudeCode, isNoneInFilesThatSayNothingOfIt) {
    for (const auto& files : std::vector<std::vector<File>>{
             {},
             {{"agent/settings.json", ""}},
             {{"agent/settings.json", "{\"hooks\": {}, \"disableAllHooks\": false}"}},
             {{"agent/settings.json", "// odd\n{\"disableAllHooks\": true}"}},
             {{"agent/settings.json", "[true]"}},
             {{"agent/settings.json", "\xFF"}},
             // What is not a truth value makes the agent drop the whole file.
             {{"agent/settings.json", "{\"disableAllHooks\": \"true\"}"}},
             {{"agent/settings.json", "{\"allowManagedHooksOnly\": true}"}},
             {{"agent/settings.local.json", "{\"disableAllHooks\": true}"}},
             {{"claude-code/managed-settings.json",
               "{\"strictPluginOnlyCustomization\": [\"skills\"]}"}},
             {{"claude-code/managed-settings.json", "{\"allowManagedHooksOnly\": true,}"}},
             {{"claude-code/managed-settings.d/a.json.bak", "{\"disableAllHooks\": true}"}},
             {{"claude-code/managed-settings.d", "no directory"}},
         }) {
        write(files);
        EXPECT_EQ(obstacle(), std::nullopt) << (files.empty() ? "" : files.front().text);
    }
}

TEST_F(ObstacleOfClaudeCode, isTheUsersOwnSwitch) {
    write({{"agent/settings.json", "{\"disableAllHooks\": true}"}});
    ASSERT_TRUE(obstacle());
    EXPECT_TRUE(obstacle()->isSwitchedOff());
    EXPECT_EQ(obstacle()->text(), "\"disableAllHooks\" is set in " +
                                      (agentDirectory / "settings.json").string() +
                                      "; take it out there, or nothing will be reported");
}

TEST_F(ObstacleOfClaudeCode, isWhatTheManagersOfTheMachineHaveSet) {
    for (const std::string setting :
         {"\"disableAllHooks\": true", "\"allowManagedHooksOnly\": true",
          "\"strictPluginOnlyCustomization\": true",
          "\"strictPluginOnlyCustomization\": [\"skills\", \"hooks\"]"})
        for (const std::string file : {"managed-settings.json", "managed-settings.d/10-a.json"}) {
            write({{"claude-code/" + file, "{" + setting + "}"}});
            ASSERT_TRUE(obstacle()) << setting;
            EXPECT_THAT(obstacle()->reason, HasSubstr((managed.claudeCode / file).string()));
            EXPECT_THAT(obstacle()->cure, HasSubstr("only those who manage this machine"));
        }
}

TEST_F(ObstacleOfClaudeCode, leavesThemTheLastWordInTheOrderOfTheirFiles) {
    write({{"agent/settings.json", "{\"disableAllHooks\": true}"},
           {"claude-code/managed-settings.json", "{\"disableAllHooks\": false}"}});
    EXPECT_EQ(obstacle(), std::nullopt);
    write({{"claude-code/managed-settings.json", "{\"disableAllHooks\": true}"},
           {"claude-code/managed-settings.d/10-a.json", "{\"disableAllHooks\": true}"},
           {"claude-code/managed-settings.d/20-b.json", "{\"disableAllHooks\": false}"}});
    EXPECT_EQ(obstacle(), std::nullopt);
    write({{"claude-code/managed-settings.d/10-a.json", "{\"disableAllHooks\": false}"},
           {"claude-code/managed-settings.d/20-b.json", "{\"disableAllHooks\": true}"}});
    ASSERT_TRUE(obstacle());
    EXPECT_THAT(obstacle()->reason, HasSubstr("20-b.json"));
}

struct ObstacleOfCodex : ObstacleOfAnAgent {
    std::filesystem::path hooksFile = agentDirectory / "hooks.json";

    std::optional<HookObstacle> obstacle() const {
        return hookObstacle({Provider::codexCLI, hooksFile, true}, managed);
    }

    // Our seven hooks, and as many notes of trust as there are events in the list.
    void setUp(const std::vector<std::string>& trusted, const std::string& more = {},
               const std::string& noted = {}) const {
        write({});
        const auto plan =
            IntegrationSetup::planInstall(Provider::codexCLI, hooksFile, "/x/tallowbrook-hook");
        writeContents(hooksFile, plan->proposedText.value());
        std::string config = "model = \"m\"\n[hooks.state]\n";
        for (const auto& event : trusted)
            config += "[hooks.state.\"" + (noted.empty() ? hooksFile.string() : noted) + ":" +
                      event + ":0:0\"]\ntrusted_hash = \"sha256:00\"\n";
        writeContents(agentDirectory / "config.toml", config + more);
    }

    static std::vector<std::string> allEvents() {
        return {"session_start", "user_prompt_submit", "permission_request", "post_tool_use",
                "stop",          "interrupt",          "session_end"};
    }
};

TEST_F(ObstacleOfCodex, isNoneWithoutOurHooksAndWithTrustedOnes) {
    write({});
    EXPECT_EQ(obstacle(), std::nullopt);
    write({{"agent/hooks.json",
            "{\"hooks\": {\"Stop\": [{\"hooks\": [{\"type\": \"command\", "
            "\"command\": \"mine\"}]}]}}"}});
    EXPECT_EQ(obstacle(), std::nullopt);
    setUp(allEvents());
    EXPECT_EQ(obstacle(), std::nullopt);
}

TEST_F(ObstacleOfCodex, isTrustThatIsNotGivenYet) {
    setUp({});
    ASSERT_TRUE(obstacle());
    EXPECT_EQ(obstacle()->kind, Kind::untrusted);
    EXPECT_EQ(obstacle()->text(),
              "the hooks are not trusted yet; start codex in a project and choose to trust them");
    std::filesystem::remove(agentDirectory / "config.toml");
    EXPECT_EQ(obstacle()->kind, Kind::untrusted);
    auto events = allEvents();
    events.pop_back();
    setUp(events);
    EXPECT_EQ(obstacle()->reason, "1 of 7 hooks is not trusted yet");
}

TEST_F(ObstacleOfCodex, goesByThePlaceOfTheHookInItsFile) {
    setUp(allEvents());
    auto text = contentsOf(hooksFile);
    const std::string begin = "\"Stop\": [";
    text.insert(text.find(begin) + begin.size(),
                R"({"hooks": [{"type": "command", "command": "mine"}]},)");
    writeContents(hooksFile, text);
    EXPECT_EQ(obstacle()->reason, "1 of 7 hooks is not trusted yet");
}

TEST_F(ObstacleOfCodex, findsTrustThatIsNotedUnderTheRealNameOfTheDirectory) {
    setUp(allEvents(), "", (canonical(directory.path) / "agent" / "hooks.json").string());
    const auto link = directory.path / "link";
    create_directory_symlink(agentDirectory, link);
    hooksFile = link / "hooks.json";
    EXPECT_EQ(obstacle(), std::nullopt);
}

TEST_F(ObstacleOfCodex, isAHookThatTheUserHasSwitchedOff) {
    setUp({"session_start", "user_prompt_submit", "permission_request", "post_tool_use", "stop",
           "interrupt"},
          "[hooks.state.\"" + hooksFile.string() +
              ":session_end:0:0\"]\ntrusted_hash = \"sha256:00\"\nenabled = false\n");
    EXPECT_EQ(
        obstacle()->text(),
        "1 of 7 hooks is switched off; start codex in a project and switch them on with /hooks");
}

TEST_F(ObstacleOfCodex, isAFeatureThatIsSwitchedOff) {
    for (const std::string feature :
         {"[features]\nhooks = false\n", "[features]\ncodex_hooks = false\n"}) {
        setUp(allEvents(), feature);
        ASSERT_TRUE(obstacle()) << feature;
        EXPECT_TRUE(obstacle()->isSwitchedOff());
        EXPECT_THAT(obstacle()->reason, HasSubstr((agentDirectory / "config.toml").string()));
    }
    setUp(allEvents(), "[features]\nhooks = true\ncodex_hooks = false\n");
    EXPECT_EQ(obstacle(), std::nullopt);
}

TEST_F(ObstacleOfCodex, leavesTheLastWordToTheManagersOfTheMachine) {
    const std::string off = "[features]\nhooks = false\n";
    const std::string on = "[features]\nhooks = true\n";
    setUp(allEvents(), on);
    writeContents(managed.codex / "config.toml", off);
    EXPECT_EQ(obstacle(), std::nullopt);
    writeContents(managed.codex / "managed_config.toml", off);
    EXPECT_THAT(obstacle()->reason, HasSubstr("managed_config.toml"));
    std::filesystem::remove(managed.codex / "managed_config.toml");
    for (const auto& requirement :
         std::vector<std::string>{off, std::string{"allow_managed_hooks_only = true\n"},
                                  std::string{"[feature_requirements]\nhooks = false\n"}}) {
        writeContents(managed.codex / "requirements.toml", requirement);
        ASSERT_TRUE(obstacle()) << requirement;
        EXPECT_THAT(obstacle()->reason, HasSubstr("requirements.toml forbids them"));
    }
}

TEST_F(ObstacleOfCodex, takesOddFilesForMissingOnes) {
    setUp(allEvents());
    for (const std::string odd :
         {"hooks = = 1", "\xFF", "features = 1", "[features]\nhooks = \"no\"\n"}) {
        writeContents(managed.codex / "requirements.toml", odd);
        writeContents(managed.codex / "managed_config.toml", odd);
        EXPECT_EQ(obstacle(), std::nullopt) << odd;
        writeContents(hooksFile, odd);
        EXPECT_EQ(obstacle(), std::nullopt) << odd;
        setUp(allEvents());
    }
}

}  // namespace
}  // namespace tallowbrook::host
