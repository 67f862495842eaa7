// `pause`, `resume`, `mute` and `unmute`.
#include <SQLiteCpp/Database.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "TestHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string untoldReasons(const TestHome& home) {
    return SQLite::Database{home.paths.databaseFile().string(), SQLite::OPEN_READONLY, 5000}
        .execAndGet("SELECT coalesce(group_concat(reason), '') FROM untold")
        .getString();
}

// As if that time had come.
void endNow(const TestHome& home, const std::string& key, const std::string& value) {
    SQLite::Database{home.paths.databaseFile().string(), SQLite::OPEN_READWRITE, 5000}.exec(
        "UPDATE settings SET value = '" + value + "' WHERE key = '" + key + "'");
}

TEST(Pause, holdsNotificationsBackUntilTheUserResumes) {
    const TestHome home;
    EXPECT_EQ(
        home.host({"pause"}),
        (ProgramResult{.status = 0,
                       .output = "Notifications are paused until \"tallowbrook resume\".\n"}));
    EXPECT_THAT(home.host({"preferences"}).output, HasSubstr("paused               on "));
    home.claude("Stop", "S1");
    EXPECT_THAT(home.host({"watch", "--once"}).output, Not(HasSubstr("finished")));
    EXPECT_EQ(home.host({"resume"}),
              (ProgramResult{.status = 0, .output = "The pause is over.\n"}));
    EXPECT_EQ(home.host({"resume"}),
              (ProgramResult{.status = 0, .output = "Notifications were not paused.\n"}));
    home.claude("Stop", "S2");
    EXPECT_THAT(home.host({"watch", "--once"}).output, HasSubstr("finished"));
}

TEST(Pause, endsByItself) {
    const TestHome home;
    const auto paused = home.host({"pause", "30m"});
    EXPECT_EQ(paused.status, 0);
    EXPECT_THAT(paused.output, testing::MatchesRegex("Notifications are paused until .*:.*\\.\n"));
    home.claude("Stop", "S1");
    EXPECT_THAT(home.host({"watch", "--once"}).output, Not(HasSubstr("finished: ")));
    endNow(home, "pausedUntil", "2020-01-01T00:00:00.000Z");
    EXPECT_THAT(home.host({"preferences"}).output, HasSubstr("paused               off "));
    home.claude("Stop", "S2");
    EXPECT_THAT(home.host({"watch", "--once"}).output, HasSubstr("finished"));
}

TEST(Pause, isLearnedOfByAHostThatSleeps) {
    const TestHome home;
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput("No sessions to show."));
    EXPECT_EQ(home.host({"pause", "until", "14:00"}).status, 0);
    home.claude("Stop", "S1");
    EXPECT_EQ(home.host({"resume"}).status, 0);
    home.claude("PermissionRequest", "S2");
    EXPECT_TRUE(host.waitForOutput("needs permission: proj"));
}

TEST(Pause, isNotChangedByWordsThatAreNoTime) {
    const TestHome home;
    const auto wrong = home.host({"pause", "soon"});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_EQ(wrong.errors,
              "tallowbrook: \"soon\" is no time: say such as 30m, 2h, 1h30m, 1d, or until 14:00. "
              "Nothing was changed.\n");
    EXPECT_THAT(home.host({"preferences"}).output, HasSubstr("paused               off "));
}

TEST(Mute, keepsQuietOfOneSession) {
    const TestHome home;
    ASSERT_EQ(home.host({"preferences", "completionAfter", "0"}).status, 0);
    home.claude("UserPromptSubmit", "S1");
    home.claude("UserPromptSubmit", "S2");
    home.host({"watch", "--once"});
    const auto muted = home.host({"mute", "S1", "for", "2h"});
    EXPECT_EQ(muted.status, 0) << muted.errors;
    EXPECT_THAT(muted.output, testing::StartsWith("The session claudeCode|S1 is muted until "));
    home.claude("Stop", "S1");
    home.claude("PermissionRequest", "S2");
    const auto watched = home.host({"watch", "--once"});
    EXPECT_THAT(watched.output, Not(HasSubstr("finished")));
    EXPECT_THAT(watched.output, HasSubstr("needs permission: proj"));
    EXPECT_EQ(untoldReasons(home), "muted");

    EXPECT_EQ(
        home.host({"unmute", "S1"}),
        (ProgramResult{.status = 0, .output = "The session claudeCode|S1 is no longer muted.\n"}));
    home.claude("PermissionRequest", "S1");
    EXPECT_THAT(home.host({"watch", "--once"}).output, HasSubstr("needs permission: proj"));
}

TEST(Mute, keepsQuietOfAProject) {
    const TestHome home;
    home.claude("UserPromptSubmit", "S1");
    home.host({"watch", "--once"});
    EXPECT_EQ(home.host({"mute", "proj"}),
              (ProgramResult{.status = 0,
                             .output = "The project proj is muted until you say otherwise.\n"}));
    home.claude("PermissionRequest", "S2");
    EXPECT_THAT(home.host({"watch", "--once"}).output, Not(HasSubstr("needs permission: proj")));
    EXPECT_EQ(home.host({"unmute"}),
              (ProgramResult{.status = 0, .output = "The project proj is no longer muted.\n"}));
    EXPECT_EQ(home.host({"unmute"}),
              (ProgramResult{.status = 0, .output = "Nothing was muted.\n"}));
}

TEST(Mute, ofWhatIsNotThereChangesNothing) {
    const TestHome home;
    home.claude("UserPromptSubmit", "S1");
    home.host({"watch", "--once"});
    EXPECT_EQ(home.host({"mute", "nowhere"}),
              (ProgramResult{.status = 2,
                             .errors = "tallowbrook: There is no session and no project "
                                       "\"nowhere\". Nothing was changed.\n"}));
    EXPECT_EQ(home.host({"unmute", "proj"}).status, 2);
    EXPECT_EQ(home.host({"mute", "proj", "soon"}).status, 2);
}

}  // namespace
}  // namespace tallowbrook
