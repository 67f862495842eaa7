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
        EXPECT_EQ(host({"setup", "--yes"}).status, 0);
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
    EXPECT_THAT(result.output, testing::MatchesRegex("  1  .*  Claude Code  /.*settings.json.*\n"));
    EXPECT_EQ(home.host({"backups", "codex"}).output, "There are no backups.\n");
}

TEST(Backups, ofAnotherDirectorysFileOfThatNameAreKeptApart) {
    SetUpHome home;
    home.environment["CLAUDE_CONFIG_DIR"] = home.directory.path / "work";
    EXPECT_EQ(home.host({"backups"}).output, "There are no backups.\n");
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
    EXPECT_EQ(home.hostWithAnswers({"restore"}, {"n"}).status, 3);
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

TEST(Restore, ofADamagedBackupChangesNothing) {
    const SetUpHome home;
    writeContents(home.backups().at(0), "\xFF");
    const auto before = home.tree();
    const auto result = home.host({"restore", "--yes"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("is not UTF-8 text."));
    EXPECT_EQ(home.tree(), before);
}

}  // namespace
}  // namespace tallowbrook
