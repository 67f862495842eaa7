#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "SessionState/SessionSnapshotCoding.h"
#include "Support/BuildPaths.h"
#include "Support/FileContents.h"
#include "Support/OrdinaryUser.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

ProgramResult printing(std::string output, std::string errors = {}) {
    return {.status = 0, .output = std::move(output), .errors = std::move(errors)};
}

// Takes in what the spool holds.
void drain(const TestHome& home) { EXPECT_EQ(home.host({"watch", "--once"}).status, 0); }

void spoolFrom(const TestHome& home, const std::string& session, std::chrono::minutes ago) {
    AgentEvent event = currentEvent(session);
    event.observedAt -= ago;
    home.spool(event);
}

TEST(Sessions, ofAHomeWithoutADatabaseAreNoneAndNothingIsMade) {
    const TestHome home;
    EXPECT_EQ(home.host({"sessions"}), printing("No sessions to show.\n"));
    EXPECT_EQ(home.host({"sessions", "--json"}), printing("[]\n"));
    EXPECT_FALSE(exists(home.paths.home));

    create_directory(home.paths.home);
    EXPECT_EQ(home.host({"sessions", "--all"}), printing("No sessions to show.\n"));
    EXPECT_TRUE(is_empty(home.paths.home));
}

TEST(Sessions, withoutOptionsAreThoseOfTheLastDay) {
    const TestHome home;
    spoolFrom(home, "dayless", std::chrono::hours{23});
    spoolFrom(home, "dayold", std::chrono::hours{25});
    drain(home);
    const std::string header =
        "  #  STATUS            AGENT        PROJECT                   SESSION    LAST HEARD OF\n";
    EXPECT_EQ(
        home.host({"sessions"}),
        printing(
            header +
            "  1  completed         Claude Code  proj                      dayless    23 h ago\n"
            "1 older session is not shown (sessions --all shows all).\n"));
    EXPECT_EQ(
        home.host({"sessions", "--all"}),
        printing(
            header +
            "  1  completed         Claude Code  proj                      dayless    23 h ago\n"
            "  2  completed         Claude Code  proj                      dayold     25 h ago\n"));
}

TEST(Sessions, thatAreAllOldAreCounted) {
    const TestHome home;
    spoolFrom(home, "one", std::chrono::hours{72});
    spoolFrom(home, "two", std::chrono::hours{73});
    drain(home);
    EXPECT_EQ(home.host({"sessions"}),
              printing("No sessions to show.\n"
                       "2 older sessions are not shown (sessions --all shows all).\n"));
    EXPECT_EQ(home.host({"sessions", "--json"}), printing("[]\n"));
}

TEST(Sessions, asJSONHoldEverythingThatIsKnown) {
    const TestHome home;
    home.claude("PermissionRequest", "S1");
    EXPECT_EQ(
        home.hook({"codex"}, R"({"session_id":"S2","hook_event_name":"Stop","turn_id":"T1"})"),
        quiet);
    const auto spooled = home.spooled();
    ASSERT_EQ(spooled.size(), 2U);
    drain(home);

    const ProgramResult result = home.host({"sessions", "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    const boost::json::value parsed = boost::json::parse(result.output);
    const auto& sessions = parsed.as_array();
    ASSERT_EQ(sessions.size(), 2U);

    const auto& first = sessions[0].as_object();
    EXPECT_EQ(first.at("id"), "claudeCode|S1");
    EXPECT_EQ(first.at("status"), "needsAttention");
    EXPECT_EQ(first.at("project"), "proj");
    EXPECT_TRUE(first.at("explanation")
                    .as_string()
                    .starts_with("A permission request for Bash was observed at "));
    EXPECT_EQ(first.at("name"), "proj");
    EXPECT_EQ(first.size(), 6U);
    const auto snapshot =
        SessionSnapshotCoding::decode(boost::json::serialize(first.at("snapshot")));
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(snapshot->key, (SessionKey{Provider::claudeCode, "S1"}));
    EXPECT_EQ(snapshot->status, SessionStatus::needsAttention);
    EXPECT_EQ(snapshot->attention, AttentionKind::permission);
    EXPECT_EQ(snapshot->statusEventType, "PermissionRequest");
    EXPECT_EQ(snapshot->statusDetail.toolName, "Bash");
    EXPECT_EQ(snapshot->statusSince, spooled[0].observedAt);
    EXPECT_EQ(snapshot->cwd, "/Users/x/proj");
    EXPECT_EQ(snapshot->eventCount, 1);

    const auto& second = sessions[1].as_object();
    EXPECT_EQ(second.at("id"), "codexCLI|S2");
    EXPECT_EQ(second.at("status"), "completed");
    EXPECT_EQ(second.at("project"), "Project unavailable");
    EXPECT_EQ(second.at("snapshot").at("lastCompletedTurnID"), "T1");
}

TEST(Sessions, thatWorkInSilenceAreStaleInBothForms) {
    const TestHome home;
    AgentEvent event = currentEvent("S1");
    event.eventType = "UserPromptSubmit";
    event.category = EventCategory::promptSubmitted;
    event.observedAt -= std::chrono::minutes{16};
    home.spool(event);
    drain(home);
    EXPECT_NE(home.host({"sessions"}).output.find("stale"), std::string::npos);
    const auto sessions = boost::json::parse(home.host({"sessions", "--json"}).output);
    const auto& session = sessions.as_array().at(0).as_object();
    EXPECT_EQ(session.at("status"), "stale");
    EXPECT_EQ(session.at("snapshot").at("status"), "working");
}

TEST(Sessions, canBeListedWhileAHostWatches) {
    const TestHome home;
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput("No sessions to show."));
    home.claude("Stop");
    ASSERT_TRUE(host.waitForOutput("finished"));
    EXPECT_NE(home.host({"sessions"}).output.find("completed"), std::string::npos);
}

// An answer that looks like an empty home would hide that there is one.
TEST(Sessions, ofAHomeThatIsAFileAreAFailure) {
    const TestHome home;
    writeContents(home.paths.home, "not a directory");
    const ProgramResult result = home.host({"sessions"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors, "");
}

TEST(Sessions, ofAHomeThatMayNotBeReadAreAFailure) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    const TestHome home;
    home.claude("Stop");
    drain(home);
    ASSERT_TRUE(user->own(home.directory.path));
    ASSERT_TRUE(user->own(home.paths.home));
    std::filesystem::permissions(home.paths.home, std::filesystem::perms::none);
    const auto mayRun = inChildProcess(
        [&] { return user->become() && access(BuildPaths::host, X_OK) == 0 ? "yes" : "no"; });
    if (mayRun != "yes") GTEST_SKIP() << "the host lies where another user may not run it";

    ProgramCall call = home.hostCall({"sessions"});
    call.prepare = [&] {
        if (!user->become()) _exit(125);
    };
    const ProgramResult result = run(call);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors, "");
}

}  // namespace
}  // namespace tallowbrook
