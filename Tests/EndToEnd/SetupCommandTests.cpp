#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Integrations/ProviderDetector.h"
#include "SetupHome.h"
#include "Support/BuildPaths.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

constexpr int declined = 3;
constexpr auto settings = R"({
  "model": "opus",
  "hooks": {
    "Stop": [
      {
        "hooks": [
          {
            "type": "command",
            "command": "say done"
          }
        ]
      }
    ]
  }
}
)";

TEST(Setup, putsTheHooksInAndProvesThatTheyArrive) {
    const SetupHome home;
    writeContents(home.claudeFile, settings);
    const auto result = home.host({"setup", "claude-code", "--yes"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("The test event has arrived.\n"));
    EXPECT_THAT(result.output, HasSubstr("Claude Code is set up"));

    const auto written = contentsOf(home.claudeFile);
    EXPECT_THAT(written, HasSubstr("\"say done\""));
    EXPECT_THAT(written, HasSubstr(home.paths.installedHelper().string()));
    ASSERT_THAT(home.backups(), SizeIs(1));
    EXPECT_EQ(contentsOf(home.backups().front()), settings);
    EXPECT_EQ(contentsOf(home.paths.installedHelper()), contentsOf(BuildPaths::helper));
}

TEST(Setup, leavesNoTraceOfItsTestEvent) {
    const SetupHome home;
    EXPECT_EQ(home.host({"setup", "codex", "--yes"}).status, 0);
    EXPECT_EQ(home.rows("events"), 0);
    EXPECT_EQ(home.rows("sessions"), 0);
    EXPECT_EQ(home.rows("notifications"), 0);
    EXPECT_TRUE(home.spooled().empty());
}

TEST(Setup, provesItselfWhileAnotherHostWatches) {
    const SetupHome home;
    RunningProgram watcher{home.hostCall({"watch"})};
    ASSERT_TRUE(watcher.waitForOutput("No sessions to show."));
    const auto result = home.host({"setup", "claude-code", "--yes"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("The test event has arrived.\n"));
    watcher.send(SIGTERM);
    // It says nothing of the test's session.
    EXPECT_EQ(watcher.wait().output, "No sessions to show.\n");
}

TEST(Setup, doneTwiceChangesNothingTheSecondTime) {
    const SetupHome home;
    EXPECT_EQ(home.host({"setup", "claude-code", "codex", "--yes"}).status, 0);
    const auto claude = contentsOf(home.claudeFile);
    const auto codex = contentsOf(home.codexFile);
    const auto again = home.host({"setup", "claude-code", "codex", "--yes"});
    EXPECT_EQ(again.status, 0);
    EXPECT_THAT(again.output, HasSubstr("(is current)"));
    EXPECT_THAT(again.output, HasSubstr("(nothing to change)"));
    EXPECT_EQ(contentsOf(home.claudeFile), claude);
    EXPECT_EQ(contentsOf(home.codexFile), codex);
    EXPECT_TRUE(home.backups().empty());
}

TEST(Setup, asADryRunWritesNothingAtAll) {
    const SetupHome home;
    writeContents(home.claudeFile, settings);
    const auto before = home.tree();
    const auto result = home.host({"setup", "claude-code", "codex", "--dry-run"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("+++ " + home.claudeFile.string()));
    EXPECT_THAT(result.output, HasSubstr("--- /dev/null\n+++ " + home.codexFile.string()));
    EXPECT_EQ(home.tree(), before);
}

TEST(Setup, withoutATerminalRefusesUnlessTheUserAgreedBefore) {
    const SetupHome home;
    writeContents(home.claudeFile, settings);
    const auto before = home.tree();
    const auto result = home.host({"setup", "claude-code"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("Standard input is no terminal"));
    EXPECT_EQ(home.tree(), before);
}

TEST(Setup, whereTheDifferenceCannotBeShownSaysSoAndChangesNothing) {
    for (const std::string option : {"--yes", "--dry-run"}) {
        const SetupHome home;
        writeContents(home.claudeFile, settings);
        ProgramCall call = home.hostCall({"setup", "claude-code", option});
        call.prepare = [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); };
        const auto result = run(call);
        EXPECT_EQ(result.status, 1) << option;
        EXPECT_THAT(result.errors, HasSubstr("Standard output cannot be written: "));
        EXPECT_EQ(contentsOf(home.claudeFile), settings);
    }
}

TEST(Setup, namesEveryFileBeforeTheFirstQuestion) {
    const SetupHome home;
    writeContents(home.claudeFile, settings);
    const auto result = home.hostWithAnswers({"setup", "claude-code", "codex"}, {"n", "n"});
    const auto beforeQuestion = result.output.substr(0, result.output.find("--- "));
    for (const auto& file : {home.claudeFile, home.codexFile, home.paths.installedHelper(),
                             home.paths.backupsDirectory()})
        EXPECT_THAT(beforeQuestion, HasSubstr(file.string()));
}

TEST(Setup, takesAnythingButAYesForANo) {
    for (const std::string answer : {"", "n", "maybe", "N"}) {
        const SetupHome home;
        writeContents(home.claudeFile, settings);
        const auto result = home.hostWithAnswers({"setup", "claude-code"}, {answer});
        EXPECT_EQ(result.status, declined) << answer;
        EXPECT_THAT(result.output, HasSubstr("was left as it is."));
        EXPECT_EQ(contentsOf(home.claudeFile), settings);
    }
}

TEST(Setup, asksForEachFileByItself) {
    const SetupHome home;
    writeContents(home.claudeFile, settings);
    const auto result = home.hostWithAnswers({"setup", "claude-code", "codex"}, {"n", "y"});
    EXPECT_EQ(result.status, declined);
    EXPECT_EQ(contentsOf(home.claudeFile), settings);
    EXPECT_THAT(contentsOf(home.codexFile), HasSubstr("tallowbrook-hook' codex"));
    EXPECT_THAT(result.output, HasSubstr("trust the new hooks"));
}

TEST(Setup, showsTheNewDifferenceWhenTheFileChangesWhileItAsks) {
    const SetupHome home;
    writeContents(home.claudeFile, settings);
    const PseudoTerminal terminal;
    RunningProgram host{SetupHome::onTerminal(terminal, home.hostCall({"setup", "claude-code"}))};
    ASSERT_TRUE(host.waitForOutput("[y/N] "));
    writeContents(home.claudeFile, "{\"later\": true}\n");
    ASSERT_TRUE(terminal.type("y\n"));
    ASSERT_TRUE(host.waitForOutput("-{\"later\": true}\n"));
    ASSERT_TRUE(terminal.type("n\n"));
    const auto result = host.wait();
    EXPECT_EQ(result.status, declined);
    EXPECT_THAT(result.errors, HasSubstr("changed after the preview was made."));
    EXPECT_EQ(contentsOf(home.claudeFile), "{\"later\": true}\n");
}

TEST(Setup, ofAFileThatIsNoJSONSaysWhereAndChangesNothing) {
    const SetupHome home;
    writeContents(home.claudeFile, "{\n  // mine\n}\n");
    const auto before = home.tree();
    const auto result = home.host({"setup", "claude-code", "--yes"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr(home.claudeFile.string()));
    EXPECT_THAT(result.errors, HasSubstr("line 2, column 3: Expected a string key"));
    EXPECT_EQ(home.tree(), before);
}

TEST(Setup, withoutAgentsSaysHowToNameOne) {
    for (const auto provider : allCases<Provider>())
        if (const auto found = ProviderDetector::live(false).detect(provider).executablePath)
            GTEST_SKIP() << "there is " << *found;
    const SetupHome home;
    const auto result = home.host({"setup", "--yes"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("No agent was found on this machine."));
}

TEST(Setup, followsAnAgentsOwnDirectoryWhereItWasMoved) {
    SetupHome home;
    home.environment["CLAUDE_CONFIG_DIR"] = home.directory.path / "elsewhere";
    home.environment["CODEX_HOME"] = home.directory.path / "codex";
    EXPECT_EQ(home.host({"setup", "claude-code", "codex", "--yes"}).status, 0);
    EXPECT_THAT(contentsOf(home.directory.path / "elsewhere" / "settings.json"),
                HasSubstr("tallowbrook-hook"));
    EXPECT_THAT(contentsOf(home.directory.path / "codex" / "hooks.json"),
                HasSubstr("tallowbrook-hook"));
    EXPECT_FALSE(std::filesystem::exists(home.claudeFile));
}

TEST(Setup, worksOnTheFileThatTheUserNames) {
    const SetupHome home;
    const auto file = home.directory.path / "project" / "settings.local.json";
    EXPECT_EQ(home.host({"setup", "claude-code", "--config", file, "--yes"}).status, 0);
    EXPECT_THAT(contentsOf(file), HasSubstr("tallowbrook-hook"));
    const auto unnamed = home.host({"setup", "--config", file, "--yes"});
    EXPECT_EQ(unnamed.status, 1);
    EXPECT_THAT(unnamed.errors, HasSubstr("name the one agent whose file it is"));
}

TEST(Setup, saysWhenTheTestEventDoesNotArrive) {
    const SetupHome home;
    writeContents(home.paths.spoolDirectory(), "in the way");
    const auto result = home.host({"setup", "claude-code", "--yes"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("The helper ran, but its test event did not arrive."));
    EXPECT_THAT(result.output, Not(HasSubstr("is set up")));
}

TEST(Setup, refusesAnAgentThatItDoesNotKnow) {
    const SetupHome home;
    EXPECT_EQ(home.host({"setup", "somebody", "--yes"}).status, 2);
}

TEST(Remove, takesOutWhatSetupPutInAndNothingElse) {
    const SetupHome home;
    writeContents(home.claudeFile, settings);
    EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
    const auto result = home.host({"remove", "claude-code", "--yes"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("Claude Code no longer calls tallowbrook."));
    EXPECT_EQ(contentsOf(home.claudeFile), settings);
    EXPECT_THAT(home.backups(), SizeIs(2));
    EXPECT_THAT(home.host({"remove", "claude-code", "--yes"}).output,
                HasSubstr("Claude Code does not call tallowbrook."));
}

TEST(Remove, asADryRunWritesNothingAtAll) {
    const SetupHome home;
    EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
    const auto before = home.tree();
    EXPECT_EQ(home.host({"remove", "claude-code", "--dry-run"}).status, 0);
    EXPECT_EQ(home.tree(), before);
}

}  // namespace
}  // namespace tallowbrook
