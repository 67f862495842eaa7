// What commands that show know while no host runs, or one that does not go on.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "EventBridge/SpoolDrainer.h"
#include "SetupHome.h"
#include "Support/BuildPaths.h"
#include "Support/LockHolder.h"
#include "Support/OrdinaryUser.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string notClaimed =
    "tallowbrook: The spool could not be claimed: lock-timeout. Its events are kept.\n";

bool isEmptied(const TestHome& home) { return SpoolDrainer{home.paths}.pendingSegmentCount() == 0; }

// The time in a sentence depends on the zone of the machine.
ProgramResult hostAtUTC(const TestHome& home, std::vector<std::string> arguments) {
    ProgramCall call = home.hostCall(std::move(arguments));
    call.environment["TZ"] = "UTC";
    return run(call);
}

TEST(UpToDate, sessionsAreListedWithWhatNoHostHasRead) {
    const TestHome home;
    home.claude("Stop");
    const ProgramResult result = home.host({"sessions"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("completed         Claude Code  proj"));
    EXPECT_TRUE(isEmptied(home));
    EXPECT_EQ(home.rows("events"), 1);
}

TEST(UpToDate, whatIsTakenInIsToldByTheNextHost) {
    const TestHome home;
    home.claude("Stop");
    EXPECT_THAT(home.host({"sessions"}).output, Not(HasSubstr("finished")));
    EXPECT_THAT(home.host({"watch", "--once"}).output, HasSubstr("Claude Code finished: proj"));
    EXPECT_THAT(home.host({"watch", "--once"}).output, Not(HasSubstr("finished")));
}

TEST(UpToDate, whatIsTakenInTooLateIsCountedByTheNextHost) {
    const TestHome home;
    AgentEvent event = currentEvent("S1");
    event.observedAt -= std::chrono::hours{2};
    home.spool(event);
    EXPECT_THAT(home.host({"sessions"}).output, HasSubstr("2 h ago"));
    const auto told = home.host({"watch", "--once"}).output;
    EXPECT_THAT(told, HasSubstr("While you were away: 1 finished."));
    EXPECT_THAT(told, Not(HasSubstr("Claude Code finished")));
}

TEST(UpToDate, explainAndNextAndHealthKnowItToo) {
    for (const auto& [command, words] : {
             std::pair<std::vector<std::string>, std::string>{{"explain", "1"}, "session S1\n"},
             {{"next"}, "1 of 1: proj\n"},
             {{"health"}, "last event just now"},
         }) {
        SetupHome home;
        EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
        home.environment["PATH"] = "/nowhere";
        home.claude("PermissionRequest");
        EXPECT_THAT(home.host(command).output, HasSubstr(words));
        EXPECT_TRUE(isEmptied(home)) << command.front();
    }
}

TEST(UpToDate, whereNothingWasRecordedNoDatabaseIsMade) {
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"sessions"}, {"explain", "1"}, {"next"}, {"health"}}) {
        const SetupHome home;
        const auto before = home.tree();
        EXPECT_EQ(home.host(command).errors.find("spool"), std::string::npos);
        EXPECT_EQ(home.tree(), before) << command.front();
    }
}

TEST(UpToDate, aSpoolThatCannotBeClaimedIsSaidWithTheAgeOfWhatIsShown) {
    const TestHome home;
    AgentEvent event = currentEvent("S1");
    event.observedAt = EventDate::parse("2025-11-15T14:05:55.123Z").value();
    home.spool(event);
    EXPECT_EQ(home.host({"sessions"}).status, 0);
    home.claude("Stop", "S2");
    const LockHolder holder{home.paths.spoolLockFile()};
    ASSERT_TRUE(holder.holds);

    const ProgramResult result = hostAtUTC(home, {"sessions", "--all"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr("S1"));
    EXPECT_EQ(result.errors,
              notClaimed +
                  "tallowbrook: Events wait in the spool; what is shown ends with the one of 15 "
                  "Nov 2025 14:05.\n");
}

TEST(UpToDate, JSONStaysWholeWhateverIsSaidBesideIt) {
    const TestHome home;
    home.claude("Stop");
    {
        const LockHolder holder{home.paths.spoolLockFile()};
        ASSERT_TRUE(holder.holds);
        EXPECT_EQ(home.host({"sessions", "--json"}),
                  (ProgramResult{.status = 0,
                                 .output = "[]\n",
                                 .errors = notClaimed + "tallowbrook: Events wait in the spool; "
                                                        "none was taken in before.\n"}));
    }
    home.spool("garbage\n");
    const auto result = home.host({"sessions", "--json"});
    EXPECT_THAT(result.output, StartsWith("[\n {\"explanation\""));
    EXPECT_EQ(result.errors, "tallowbrook: One line of the spool held no event and was skipped.\n");
}

TEST(UpToDate, aHostThatIsAboutToReadIsNotDisturbed) {
    const TestHome home;
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput("No sessions to show."));
    host.send(SIGSTOP);
    home.claude("Stop");
    EXPECT_EQ(home.host({"sessions"}),
              (ProgramResult{.status = 0, .output = "No sessions to show.\n"}));
    EXPECT_FALSE(isEmptied(home));
}

TEST(UpToDate, aHostThatReadsNothingIsSaid) {
    const TestHome home;
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput("No sessions to show."));
    host.send(SIGSTOP);
    home.claude("Stop");
    last_write_time(home.paths.activeSpoolFile(),
                    std::filesystem::file_time_type::clock::now() - std::chrono::minutes{5});
    const auto result = home.host({"sessions"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, testing::MatchesRegex(
                                   "tallowbrook: The host .process [0-9]+. runs, but has not read "
                                   "the spool since .*\\.\n"
                                   "tallowbrook: Events wait in the spool; none was taken in "
                                   "before.\n"));
}

TEST(UpToDate, aHomeThatMayNotBeWrittenIsShownWithItsAge) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    SetupHome home;
    home.environment["PATH"] = "/nowhere";
    home.claude("PermissionRequest", "known");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    home.claude("Stop", "unknown");
    for (auto part = home.paths.home; part != home.directory.path.parent_path();
         part = part.parent_path())
        std::filesystem::permissions(part, std::filesystem::perms{0755});
    const std::vector files{home.paths.databaseFile(), home.paths.activeSpoolFile(),
                            home.paths.spoolDirectory(), home.paths.home};
    for (const auto& file : files) {
        const auto mayOnlyRead = std::filesystem::perms{is_directory(file) ? 0500U : 0400U};
        std::filesystem::permissions(file, mayOnlyRead);
        ASSERT_TRUE(user->own(file));
    }
    const auto mayRun = inChildProcess(
        [&] { return user->become() && access(BuildPaths::host, X_OK) == 0 ? "yes" : "no"; });
    if (mayRun != "yes") GTEST_SKIP() << "the host lies where another user may not run it";

    struct Row {
        std::vector<std::string> words;
        int status;
        std::string output;
    };
    for (const auto& [words, status, output] :
         {Row{{"sessions"}, 0, "needs permission"}, Row{{"explain", "1"}, 0, "session known\n"},
          Row{{"next"}, 1, "1 of 1: proj\n"}, Row{{"health"}, 4, "Claude Code: not set up"}}) {
        ProgramCall call = home.hostCall(words);
        call.prepare = [&] {
            if (!user->become()) _exit(125);
        };
        const ProgramResult result = run(call);
        EXPECT_EQ(result.status, status) << words.front() << result.errors;
        EXPECT_THAT(result.output, HasSubstr(output));
        EXPECT_THAT(result.errors,
                    StartsWith("tallowbrook: This home cannot be written.\n"
                               "tallowbrook: Events wait in the spool; what is shown ends with "
                               "the one of "));
    }
    EXPECT_FALSE(isEmptied(home));
    for (const auto& file : files) std::filesystem::permissions(file, std::filesystem::perms{0700});
}

}  // namespace
}  // namespace tallowbrook
