#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SetupHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

constexpr auto original = "{\n  \"mine\": 1.50\n}\n";

struct SetUpHome : SetupHome {
    SetUpHome() {
        writeContents(claudeFile, original);
        EXPECT_EQ(host({"setup", "claude-code", "--yes"}).status, 0);
    }
};

TEST(Backups, areNoneAtFirst) {
    const SetupHome home;
    const auto result = home.host({"backups"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "There are no backups.\n");
}

TEST(Backups, areListedWithTheirAgentsAndNumbers) {
    const SetUpHome home;
    const auto result = home.host({"backups"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output,
                testing::MatchesRegex("  1  .*  Claude Code  before setup  /.*settings.json.*\n"));
    EXPECT_EQ(home.host({"backups", "codex"}).output, "There are no backups.\n");
}

TEST(Backups, ofAnotherDirectorysFileOfThatNameAreKeptApart) {
    SetUpHome home;
    home.environment["CLAUDE_CONFIG_DIR"] = home.directory.path / "work";
    EXPECT_EQ(home.host({"backups"}).output, "There are no backups.\n");
}

TEST(Backups, ofDirectoriesWhoseNamesLookAlikeAreKeptApart) {
    SetupHome home;
    const auto set = [&](const std::string& directory) {
        home.environment["CLAUDE_CONFIG_DIR"] = home.directory.path / directory;
        return home.directory.path / directory / "settings.json";
    };
    const auto file = set("a%b/x");
    writeContents(file, "{\"whose\": \"a%b\"}\n");
    EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
    const auto other = set("a/b/x");
    writeContents(other, "{\"whose\": \"b\"}\n");
    EXPECT_EQ(home.host({"restore", "--yes"}).errors, "tallowbrook: There are no backups.\n");
    EXPECT_EQ(contentsOf(other), "{\"whose\": \"b\"}\n");
    set("a%b/x");
    EXPECT_EQ(home.host({"restore", "--yes"}).status, 0);
    EXPECT_EQ(contentsOf(file), "{\"whose\": \"a%b\"}\n");
}

TEST(Backups, ofAFileInALongDirectoryAreMade) {
    SetupHome home;
    const auto directory =
        home.directory.path / std::string(150, 'a') / std::string(150, 'b') / ".claude";
    home.environment["CLAUDE_CONFIG_DIR"] = directory;
    writeContents(directory / "settings.json", original);
    EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).errors, "");
    EXPECT_EQ(home.host({"restore", "--yes"}).status, 0);
    EXPECT_EQ(contentsOf(directory / "settings.json"), original);
}

TEST(Backups, growToTwentyAndTheFirst) {
    const SetUpHome home;
    const auto first = home.backups().at(0);
    // Older than those to come, whatever second they come in.
    const auto oldest = first.parent_path() / "settings.json.20200101T000000Z.9f3a06c1.bak";
    rename(first, oldest);
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(home.host({"remove", "claude-code", "--yes"}).status, 0);
        EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
    }
    EXPECT_THAT(home.backups(), SizeIs(21));
    EXPECT_TRUE(exists(oldest));
}

TEST(Restore, putsTheNewestBackBytesForBytes) {
    const SetUpHome home;
    const auto result = home.host({"restore", "--yes"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("The backup was put back.\n"));
    EXPECT_EQ(contentsOf(home.claudeFile), original);
    EXPECT_THAT(home.backups(), SizeIs(2));
}

TEST(Restore, asksFirst) {
    const SetUpHome home;
    const auto before = contentsOf(home.claudeFile);
    const auto refused = home.hostWithAnswers({"restore"}, {"n"});
    EXPECT_EQ(refused.status, 3);
    EXPECT_THAT(refused.output, HasSubstr(home.claudeFile.string() + " was left as it is.\n"));
    EXPECT_EQ(contentsOf(home.claudeFile), before);
    EXPECT_EQ(home.hostWithAnswers({"restore"}, {"y"}).status, 0);
    EXPECT_EQ(contentsOf(home.claudeFile), original);
}

TEST(Restore, findsABackupByNumberNameAndPath) {
    for (const int way : {0, 1, 2}) {
        const SetUpHome home;
        const auto backup = home.backups().at(0);
        const std::string word = way == 0   ? "1"
                                 : way == 1 ? backup.filename().string()
                                            : backup.string();
        EXPECT_EQ(home.host({"restore", word, "--yes"}).status, 0) << word;
        EXPECT_EQ(contentsOf(home.claudeFile), original);
    }
}

TEST(Restore, takesTheAgentAsAWordBeforeAndBehindTheBackup) {
    using Words = std::vector<std::string>;
    for (const auto& words :
         {Words{"claude-code", "1"}, Words{"1", "claude-code"}, Words{"claude-code"}}) {
        const SetUpHome home;
        Words arguments{"restore", "--yes"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        const auto result = home.host(arguments);
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(contentsOf(home.claudeFile), original);
    }
    const SetUpHome home;
    EXPECT_EQ(home.host({"restore", "codex", "1", "--yes"}).status, 2);
    EXPECT_EQ(home.host({"restore", "codex", "--yes"}).errors,
              "tallowbrook: There are no backups.\n");
    for (const auto& words : {Words{"1", "2"}, Words{"codex", "claude-code"}}) {
        const auto result = home.host({"restore", words[0], words[1], "--yes"});
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.errors, "tallowbrook: Name one agent and one backup at most.\n");
    }
}

TEST(Restore, withoutANameTakesTheNewestFromBeforeASetup) {
    const SetUpHome home;
    const auto setUp = contentsOf(home.claudeFile);
    // Its backup holds the hooks.
    EXPECT_EQ(home.host({"remove", "claude-code", "--yes"}).status, 0);
    const auto listed = home.host({"backups"}).output;
    EXPECT_THAT(listed, testing::MatchesRegex("  1  .*  Claude Code  set up        /.*\n"
                                              "  2  .*  Claude Code  before setup  /.*\n"));
    writeContents(home.claudeFile, "{\"lost\": true}\n");
    const auto shown = home.host({"restore", "--dry-run"}).output;
    EXPECT_THAT(shown, testing::ContainsRegex("Backup: /.*settings.json.*.bak \\(before setup, "));
    EXPECT_EQ(home.host({"restore", "--yes"}).status, 0);
    EXPECT_EQ(contentsOf(home.claudeFile), original);
}

TEST(Restore, withoutANameRefusesWhereAllBackupsHoldTheHooks) {
    const SetupHome home;
    EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
    EXPECT_EQ(home.host({"remove", "claude-code", "--yes"}).status, 0);
    const auto before = home.tree();
    const auto result = home.host({"restore", "--yes"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("No backup is from before a setup."));
    EXPECT_EQ(home.tree(), before);
    EXPECT_EQ(home.host({"restore", "1", "--yes"}).status, 0);
    EXPECT_THAT(contentsOf(home.claudeFile), HasSubstr("tallowbrook-hook"));
}

TEST(Restore, ofSeveralBackupsOfOneSecondTakesTheOneWrittenLast) {
    const SetUpHome home;
    const auto backup = home.backups().at(0);
    const auto now = std::filesystem::last_write_time(backup);
    const auto stem = backup.filename().string();
    const auto copyNamed = [&](const std::string& random, const std::string& text, int age) {
        const auto end = stem.find('.', stem.find("Z."));
        const auto copy = backup.parent_path() / (stem.substr(0, end + 1) + random + ".bak");
        writeContents(copy, text);
        std::filesystem::last_write_time(copy, now - std::chrono::milliseconds{age});
    };
    copyNamed("ffffffff", "{\"text\": \"older\"}\n", 20);
    copyNamed("00000000", "{\"text\": \"newest\"}\n", 0);
    std::filesystem::last_write_time(backup, now - std::chrono::milliseconds{10});
    EXPECT_EQ(home.host({"restore", "--yes"}).status, 0);
    EXPECT_EQ(contentsOf(home.claudeFile), "{\"text\": \"newest\"}\n");
}

TEST(Restore, ofNoSuchBackupIsWrongUsage) {
    const SetUpHome home;
    const auto before = home.tree();
    const auto result = home.host({"restore", "7", "--yes"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("There is no backup \"7\"."));
    EXPECT_EQ(home.tree(), before);
}

TEST(Restore, withoutAnyBackupFails) {
    const SetupHome home;
    const auto result = home.host({"restore", "--yes"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("There are no backups."));
}

TEST(Restore, overAFileThatCannotBeReadSaysWhyInWholeSentences) {
    const SetUpHome home;
    std::filesystem::remove(home.claudeFile);
    std::filesystem::create_directory(home.claudeFile);
    EXPECT_EQ(home.host({"restore", "--yes"}).errors,
              "tallowbrook: Could not read " + home.claudeFile.string() +
                  ": Is a directory. Nothing was changed.\n");
}

TEST(Restore, ofADamagedBackupChangesNothing) {
    const SetUpHome home;
    writeContents(home.backups().at(0), "\xFF");
    const auto before = home.tree();
    EXPECT_THAT(home.host({"backups"}).output, HasSubstr("  Claude Code  unreadable    /"));
    const auto result = home.host({"restore", "1", "--yes"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("is not UTF-8 text."));
    EXPECT_EQ(home.tree(), before);
}

}  // namespace
}  // namespace tallowbrook
