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
    EXPECT_THAT(result.output, testing::EndsWith("\nNext: run \"tallowbrook watch\" and leave it "
                                                 "open; it tells you who waits for you.\n"));

    const auto written = contentsOf(home.claudeFile);
    EXPECT_THAT(written, HasSubstr("\"say done\""));
    EXPECT_THAT(written, HasSubstr(home.paths.installedHelper().string()));
    ASSERT_THAT(home.backups(), SizeIs(1));
    EXPECT_EQ(contentsOf(home.backups().front()), settings);
    EXPECT_EQ(contentsOf(home.paths.installedHelper()), contentsOf(BuildPaths::helper));
    // The test event leaves no trace.
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
    EXPECT_THAT(watcher.wait().output, testing::EndsWith("setup\" in another terminal.\n"
                                                         "No sessions to show.\n"));
    EXPECT_THAT(result.output, testing::EndsWith("\nNext: nothing; a host is running and tells "
                                                 "you.\n"));
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

TEST(Setup, saysWhichOtherNamesOfTheFileKeepTheOldContents) {
    const SetupHome home;
    writeContents(home.claudeFile, settings);
    create_hard_link(home.claudeFile, home.user / "one");
    const auto sentence = home.claudeFile.string() + " has 1 other name (a hard link); it will ";
    EXPECT_THAT(home.hostWithAnswers({"setup", "claude-code"}, {"n"}).output, HasSubstr(sentence));
    create_hard_link(home.claudeFile, home.user / "two");
    const auto result = home.host({"setup", "claude-code", "--yes"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output,
                HasSubstr(home.claudeFile.string() +
                          " has 2 other names (hard links); they will keep the old contents.\n"));
    EXPECT_EQ(contentsOf(home.user / "two"), settings);
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

TEST(Setup, offersATestNotificationAtItsEnd) {
    const std::string question = "Show a test notification? [y/N] ";
    const SetupHome home;
    writeContents(home.claudeFile, settings);
    const auto tried = home.hostWithAnswers({"setup", "claude-code"}, {"y", "y"});
    EXPECT_EQ(tried.status, 0) << tried.errors;
    const auto place = tried.output.find(question);
    ASSERT_NE(place, std::string::npos) << tried.output;
    EXPECT_THAT(tried.output.substr(place + question.size()), testing::StartsWith("terminal: "));

    const auto refused = home.hostWithAnswers({"setup", "claude-code"}, {""});
    EXPECT_EQ(refused.status, 0);
    EXPECT_THAT(refused.output, HasSubstr(question));
    EXPECT_THAT(home.host({"setup", "claude-code", "--yes"}).output, Not(HasSubstr(question)));
}

TEST(Setup, asksForEachFileByItself) {
    const SetupHome home;
    writeContents(home.claudeFile, settings);
    const auto result = home.hostWithAnswers({"setup", "claude-code", "codex"}, {"n", "y"});
    EXPECT_EQ(result.status, declined);
    EXPECT_EQ(contentsOf(home.claudeFile), settings);
    EXPECT_THAT(contentsOf(home.codexFile), HasSubstr("tallowbrook-hook' codex"));
    EXPECT_THAT(result.output, HasSubstr("trust the new hooks"));
    // Every file is named before the first question.
    const auto announced = result.output.substr(0, result.output.find("--- "));
    for (const auto& file : {home.claudeFile, home.codexFile, home.paths.installedHelper(),
                             home.paths.backupsDirectory()})
        EXPECT_THAT(announced, HasSubstr(file.string()));
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

TEST(Setup, andRemoveOfAFileThatTheyCannotReadSayWhyInWholeSentences) {
    for (const std::string command : {"setup", "remove"}) {
        const SetupHome home;
        const auto refusal = [&](const std::string& reason) {
            return ProgramResult{.status = 1, .errors = "tallowbrook: " + reason + "\n"};
        };
        const std::vector<std::string> words{command, "claude-code", "--yes"};
        const auto file = home.claudeFile.string();
        std::filesystem::create_directories(home.claudeFile);
        EXPECT_EQ(home.host(words),
                  refusal("Could not read " + file + ": Is a directory. Nothing was changed."));

        std::filesystem::remove(home.claudeFile);
        writeContents(home.claudeFile, "{\n  // mine\n}\n");
        const auto before = home.tree();
        EXPECT_EQ(
            home.host(words),
            refusal(file + ": The file is not valid JSON (line 2, column 3: Expected a string "
                           "key). It was not modified. Line 2 holds a comment, which JSON does not "
                           "have: take it out."));
        EXPECT_EQ(home.tree(), before);
    }
}

TEST(Setup, ofTwoFilesSaysThatNeitherWasChangedWhereOneIsRefused) {
    const SetupHome home;
    writeContents(home.claudeFile, settings);
    writeContents(home.codexFile, "{\"description\": 1, \"description\": 2}");
    const auto before = home.tree();
    const auto result = home.host({"setup", "claude-code", "codex", "--yes"});
    EXPECT_THAT(
        result.errors,
        testing::EndsWith("It was not modified. \"description\" stands twice on line 1: keep "
                          "one of the two. Nothing was changed.\n"));
    EXPECT_EQ(home.tree(), before);
}

TEST(Setup, saysInOneLineWhatItAddsBeforeTheDifferenceAndInTheQuestion) {
    const SetupHome home;
    writeContents(home.claudeFile, settings);
    const auto output = home.hostWithAnswers({"setup", "claude-code"}, {"n"}).output;
    const std::string summary = "adds 9 hooks, nothing else";
    const auto difference = output.find("--- ");
    EXPECT_THAT(output.substr(0, difference),
                HasSubstr("Claude Code: " + home.claudeFile.string() + " (" + summary + ")\n"));
    EXPECT_THAT(output.substr(difference),
                HasSubstr(home.claudeFile.string() + ": " + summary + ".\nChange it? [y/N] "));
}

TEST(Setup, saysBeforeTheQuestionAndInTheEndThatTheAgentRunsNoHooks) {
    const SetupHome home;
    writeContents(home.claudeFile, "{\"disableAllHooks\": true}\n");
    const auto sentence = "Claude Code runs no hooks: \"disableAllHooks\" is set in " +
                          home.claudeFile.string() +
                          "; take it out there, or nothing will be reported.\n";
    const auto refused = home.hostWithAnswers({"setup", "claude-code"}, {"n"}).output;
    EXPECT_THAT(refused.substr(0, refused.find("--- ")), HasSubstr(sentence));
    const auto done = home.host({"setup", "claude-code", "--yes"});
    EXPECT_EQ(done.status, 3);
    EXPECT_THAT(done.output, testing::EndsWith("The test event has arrived.\n" + sentence));
}

TEST(Setup, showsADifferenceThatPatchCanApply) {
    for (const std::string text : {settings, "{\"a\": 1}\r\n"}) {
        const SetupHome home;
        writeContents(home.claudeFile, text);
        const auto shown = home.host({"setup", "claude-code", "--dry-run"}).output;
        const auto patch = home.directory.path / "change.patch";
        writeContents(patch, shown);
        const auto patched = home.directory.path / "patched.json";
        writeContents(patched, text);
        const auto result = run({.program = "/usr/bin/patch",
                                 .arguments = {"--binary", patched.string(), patch.string()}});
        if (result.status == 127) GTEST_SKIP() << "there is no patch program";
        EXPECT_EQ(result.status, 0) << result.output << result.errors;
        EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
        EXPECT_EQ(contentsOf(patched), contentsOf(home.claudeFile));
    }
}

TEST(Setup, asksWhetherAReadOnlyFileIsToBeChangedAllTheSame) {
    const SetupHome home;
    writeContents(home.claudeFile, settings);
    constexpr auto readOnly = std::filesystem::perms{0444};
    permissions(home.claudeFile, readOnly);
    const std::string question = "The file is read-only. Change it all the same? [y/N] ";
    const auto refused = home.hostWithAnswers({"setup", "claude-code"}, {"n"});
    EXPECT_EQ(refused.status, declined);
    EXPECT_THAT(refused.output, HasSubstr(question));
    EXPECT_EQ(contentsOf(home.claudeFile), settings);

    const auto agreed = home.hostWithAnswers({"setup", "claude-code"}, {"y", "n"});
    EXPECT_EQ(agreed.status, 0) << agreed.errors;
    EXPECT_THAT(contentsOf(home.claudeFile), HasSubstr("tallowbrook-hook"));
    EXPECT_EQ(std::filesystem::status(home.claudeFile).permissions(), readOnly);
}

TEST(Setup, takesNoYesGivenBeforehandForAReadOnlyFile) {
    const SetupHome home;
    writeContents(home.claudeFile, settings);
    permissions(home.claudeFile, std::filesystem::perms{0444});
    const auto result = home.host({"setup", "claude-code", "--yes"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "tallowbrook: " + home.claudeFile.string() +
                  " is read-only and was left as it is. Make it writable (chmod u+w), "
                  "or leave --yes out to be asked.\n");
    EXPECT_EQ(contentsOf(home.claudeFile), settings);
    EXPECT_THAT(home.host({"setup", "claude-code", "--dry-run"}).output,
                HasSubstr("The file is read-only.\n"));
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

// The words of a call with another home than the one that the agents report to.
ProgramCall callOnAnotherHome(const SetupHome& home, std::vector<std::string> words) {
    words.insert(words.end(), {"--home", home.directory.path / "other"});
    return home.plainHostCall(std::move(words));
}

TEST(Setup, andRemoveOfAnotherHomeLeaveTheAgentsOwnFilesAlone) {
    const SetupHome home;
    EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
    const auto before = contentsOf(home.claudeFile);
    for (const std::string command : {"setup", "remove"}) {
        const auto refused = run(callOnAnotherHome(home, {command, "claude-code", "--yes"}));
        EXPECT_EQ(refused.status, 2) << command;
        EXPECT_THAT(refused.errors, HasSubstr("so their own configuration is left alone."));
        EXPECT_THAT(refused.errors, HasSubstr("--config FILE"));
        const auto shown = run(callOnAnotherHome(home, {command, "claude-code", "--dry-run"}));
        EXPECT_EQ(shown.status, 0) << shown.errors;
        EXPECT_THAT(shown.output, HasSubstr("+++ " + home.claudeFile.string()));
    }
    EXPECT_EQ(contentsOf(home.claudeFile), before);
    EXPECT_FALSE(std::filesystem::exists(home.directory.path / "other"));
}

TEST(Setup, andRemoveWorkOnTheFileThatTheUserNamesForAnotherHomeToo) {
    for (const bool isOther : {false, true}) {
        const SetupHome home;
        const auto file = home.directory.path / "project" / "settings.local.json";
        const auto call = [&](const std::string& command) {
            std::vector<std::string> words{command, "claude-code", "--yes", "--config", file};
            return run(isOther ? callOnAnotherHome(home, words) : home.hostCall(words));
        };
        const auto data = isOther ? home.directory.path / "other" : home.paths.home;
        const auto result = call("setup");
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_THAT(contentsOf(file), HasSubstr((data / "bin" / "tallowbrook-hook").string()));
        EXPECT_EQ(call("remove").status, 0);
        EXPECT_EQ(contentsOf(file), "{}\n");
        EXPECT_FALSE(std::filesystem::exists(home.claudeFile));
    }
}

TEST(Setup, ofAFileWithoutItsAgentSaysWhatIsMissing) {
    const SetupHome home;
    const auto result = home.host({"setup", "--config", "settings.json", "--yes"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("name the one agent whose file it is"));
}

TEST(Setup, takesAnotherSpellingOfTheStandardHomeForIt) {
    const SetupHome home;
    auto link = home.directory.path / "link";
    std::filesystem::create_directories(home.paths.home);
    std::filesystem::create_directory_symlink(home.paths.home, link);
    for (const auto& spelling : {home.paths.home.string() + "/", link.string()}) {
        const auto result =
            run(home.plainHostCall({"setup", "codex", "--dry-run", "--home", spelling}));
        EXPECT_EQ(result.errors, "") << spelling;
    }
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

TEST(Remove, leavesAFileInTabsAndCRLFAsItWasBeforeSetup) {
    const SetupHome home;
    const std::string mine =
        "{\r\n\t\"model\" : \"opus\",\r\n\t\"hooks\": {\r\n\t\t\"Stop\": [{ \"hooks\": [] }]\r\n"
        "\t},\r\n\t\"permissions\": { \"allow\": [\"Bash\", \"Read\"] }\r\n}";
    writeContents(home.claudeFile, mine);
    EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
    const auto written = contentsOf(home.claudeFile);
    EXPECT_THAT(written, HasSubstr("\r\n\t\t\"Stop\": [{ \"hooks\": [] }, { \"hooks\""));
    EXPECT_THAT(written, HasSubstr("\r\n\t},\r\n\t\"permissions\": { \"allow\""));
    EXPECT_THAT(written, HasSubstr("tallowbrook-hook"));
    EXPECT_EQ(home.host({"remove", "claude-code", "--yes"}).status, 0);
    EXPECT_EQ(contentsOf(home.claudeFile), mine);
}

TEST(Remove, givesBackWhatWasEmptyBeforeSetup) {
    for (const std::string mine :
         {"{\n}\n", "{ }", "", "\n", "{\"hooks\": {}}\n", "{\n  \"hooks\": { }\n}",
          "{\"hooks\": {\"Stop\": [], \"Other\": []}, \"a\": [ ]}\n"}) {
        const SetupHome home;
        writeContents(home.claudeFile, mine);
        EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
        EXPECT_THAT(contentsOf(home.claudeFile), HasSubstr("tallowbrook-hook"));
        EXPECT_EQ(home.host({"remove", "claude-code", "--yes"}).status, 0);
        EXPECT_EQ(contentsOf(home.claudeFile), mine);
    }
}

TEST(Remove, givesBackTheNewestOfTheTextsThatSetupMakesTheSameOf) {
    const SetupHome home;
    for (const std::string mine : {"{\n}\n", "{}\n", "{ }\n", "{\n}\n"}) {
        writeContents(home.claudeFile, mine);
        EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
        EXPECT_EQ(home.host({"remove", "claude-code", "--yes"}).status, 0);
        EXPECT_EQ(contentsOf(home.claudeFile), mine);
    }
}

TEST(Remove, keepsWhatWasChangedSinceSetup) {
    const SetupHome home;
    writeContents(home.claudeFile, "{\n  \"a\": 1,\n  \"hooks\": {}\n}\n");
    EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
    auto text = contentsOf(home.claudeFile);
    writeContents(home.claudeFile, text.replace(text.find(": 1"), 3, ": 2"));
    EXPECT_EQ(home.host({"remove", "claude-code", "--yes"}).status, 0);
    EXPECT_EQ(contentsOf(home.claudeFile), "{\n  \"a\": 2\n}\n");
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
