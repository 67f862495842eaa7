#include <SQLiteCpp/Database.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SetupHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(Explain, tellsWhyAndListsTheLastEvents) {
    const TestHome home;
    home.claude("UserPromptSubmit", "S1");
    home.claude("PermissionRequest", "S1");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    for (const std::string word : {"1", "S", "S1"}) {
        const auto result = home.host({"explain", word});
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_THAT(result.output, HasSubstr("proj, Claude Code, since "));
        EXPECT_THAT(result.output, HasSubstr(", session S1\n"));
        EXPECT_THAT(result.output,
                    testing::ContainsRegex("Tallowbrook\\s+never\\s+answers\\s+it\\."));
        EXPECT_THAT(result.output, HasSubstr("The last 2 of 2 events:\n"));
        EXPECT_LT(result.output.find("UserPromptSubmit "),
                  result.output.find("PermissionRequest "));
    }
}

TEST(Explain, tellsWhatWasToldByWhichChannelAndWhen) {
    const TestHome home;
    home.claude("PermissionRequest", "S1");
    home.claude("Stop", "S10");
    // Taken in, and not told yet.
    EXPECT_EQ(home.host({"sessions"}).status, 0);
    EXPECT_THAT(
        home.host({"explain", "S1"}).output,
        testing::ContainsRegex("\nWhat was told of it:\n"
                               "[0-9:]+ +needs permission +is still to be told \\(desktop\\)\n"
                               " +is still to be told \\(lines\\)\n$"));
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    home.claude("Stop", "S1");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    const auto output = home.host({"explain", "S1"}).output;
    EXPECT_THAT(output, testing::ContainsRegex(
                            "\nWhat was told of it:\n"
                            "[0-9:]+ +needs permission +not told: it was over \\(desktop\\)\n"
                            " +told at [0-9:]+ \\(lines\\)\n"
                            "[0-9:]+ +finished +told at [0-9:]+ \\(lines\\)\n$"));
}

TEST(Explain, tellsWhyNothingWasTold) {
    const TestHome home;
    EXPECT_EQ(home.host({"preferences", "notifyOnCompletion", "off"}).status, 0);
    home.claude("UserPromptSubmit", "S1");
    home.claude("Stop", "S1");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    SQLite::Database{home.paths.databaseFile().string(), SQLite::OPEN_READWRITE}.exec(
        "DELETE FROM untold; INSERT INTO untold (event_id, session_storage_id, reason, at, turn, "
        "is_held_back)"
        " SELECT id, 'claudeCode|S1', 'shortTurn', observed_at, 3700000, 0 FROM events"
        " WHERE record LIKE '%turnCompleted%'");
    EXPECT_THAT(home.host({"explain", "S1"}).output,
                testing::ContainsRegex("\nWhat was told of it:\n"
                                       "[0-9:]+ +finished +not told: the turn took 3 s\n$"));
}

TEST(Explain, saysWhereNothingWasToBeTold) {
    const TestHome home;
    home.claude("UserPromptSubmit", "S1");
    EXPECT_THAT(home.host({"explain", "S1"}).output,
                testing::EndsWith("\nNothing of it was to be told so far.\n"));
}

TEST(Explain, ofNoSessionOrSeveralIsWrongUsage) {
    const TestHome home;
    home.claude("Stop", "S1");
    home.claude("Stop", "S2");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    const auto none = home.host({"explain", "T"});
    EXPECT_EQ(none.status, 2);
    EXPECT_THAT(none.errors, HasSubstr("There is no session \"T\"."));
    const auto several = home.host({"explain", "S"});
    EXPECT_EQ(several.status, 2);
    EXPECT_THAT(several.errors, HasSubstr("2 sessions begin with \"S\"."));
    EXPECT_EQ(home.host({"explain"}).status, 2);
}

TEST(Explain, whereNothingWasEverStoredMakesNoDatabase) {
    const TestHome home;
    const auto result = home.host({"explain", "1"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("There are no sessions yet."));
    EXPECT_FALSE(std::filesystem::exists(home.paths.home));
}

TEST(Demo, showsSessionsAndTheirEventsAndStoresNothing) {
    const TestHome home;
    const auto result = home.host({"demo"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    for (const std::string project : {"checkout-api", "design-system", "marketing-site", "ios-app",
                                      "docs-site", "infra", "data-pipeline", "billing-service"})
        EXPECT_THAT(result.output, HasSubstr(project));
    EXPECT_THAT(result.output, HasSubstr("stale             Claude Code  infra"));
    EXPECT_FALSE(std::filesystem::exists(home.paths.home));
}

TEST(Doctor, reportsAnUntouchedMachineAndChangesNothing) {
    const SetupHome home;
    const auto result = home.host({"doctor"});
    EXPECT_EQ(result.status, 4) << result.errors;
    EXPECT_THAT(result.output, testing::StartsWith("Tallowbrook diagnostics (sanitized)\n"));
    EXPECT_THAT(result.output, HasSubstr("Stored events: unavailable"));
    EXPECT_THAT(result.output, HasSubstr("Sessions: none\nLast event: never\n"));
    EXPECT_THAT(result.output, HasSubstr("integration not set up"));
    EXPECT_FALSE(std::filesystem::exists(home.paths.home));
}

TEST(Doctor, reportsWhatIsStoredAndWhatWentWrong) {
    const SetupHome home;
    home.claude("Stop", "S1");
    home.claude("PermissionRequest", "S2");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    home.claude("Stop", "S1");
    EXPECT_EQ(home.hook({"somebody"}, "{}").status, 0);
    const auto result = home.host({"doctor"});
    EXPECT_THAT(result.output, HasSubstr("Stored events: 2 · pending spool segments: 1\n"));
    EXPECT_THAT(result.output, HasSubstr("Sessions: Needs Attention=1, Completed=1\n"));
    EXPECT_THAT(result.output, Not(HasSubstr("Last event: never")));
    EXPECT_THAT(result.output, HasSubstr("Recent helper diagnostics:\n"));
    EXPECT_THAT(result.output, HasSubstr("unknown or missing source argument"));
}

TEST(Next, saysWhenNobodyWaits) {
    const TestHome home;
    home.claude("Stop", "S1");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    const auto result = home.host({"next"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "No session waits for you.\n");
}

TEST(Next, stepsFromOneWaitingSessionToTheNext) {
    TestHome home;
    home.environment["PATH"] = "/nowhere";
    for (const std::string session : {"S1", "S2", "S3"}) home.claude("PermissionRequest", session);
    home.claude("Stop", "S4");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    std::string places;
    for (int i = 0; i < 4; ++i) {
        places += home.host({"next"}).output.substr(0, 6) + "|";
        // However long this machine takes, the next step counts as a quick one.
        SQLite::Database{home.paths.databaseFile().string(), SQLite::OPEN_READWRITE}.exec(
            "UPDATE settings SET value = json_set(value, '$.at', '2999-01-01T00:00:00.000Z')"
            " WHERE key = 'waitingCycle'");
    }
    EXPECT_EQ(places, "1 of 3|2 of 3|3 of 3|1 of 3|");
}

TEST(Watch, remindsOfASessionThatKeepsWaiting) {
    const TestHome home;
    AgentEvent event = currentEvent("S1");
    event.eventType = "PermissionRequest";
    event.category = EventCategory::attentionRequested;
    event.attention = AttentionKind::permission;
    event.observedAt -= std::chrono::minutes{11};
    home.spool(event);
    const auto first = home.host({"watch", "--once"});
    EXPECT_THAT(first.output, HasSubstr("Claude Code is still waiting for permission: "));
    EXPECT_THAT(first.output, HasSubstr("waiting for "));
    EXPECT_THAT(home.host({"watch", "--once"}).output, Not(HasSubstr("still waiting")));
}

TEST(Watch, remindsNobodyWhoSwitchedRemindersOff) {
    const TestHome home;
    EXPECT_EQ(home.host({"preferences", "reminderInterval", "off"}).status, 0);
    AgentEvent event = currentEvent("S1");
    event.category = EventCategory::attentionRequested;
    event.attention = AttentionKind::input;
    event.observedAt -= std::chrono::minutes{40};
    home.spool(event);
    EXPECT_THAT(home.host({"watch", "--once"}).output, Not(HasSubstr("still waiting")));
}

}  // namespace
}  // namespace tallowbrook
