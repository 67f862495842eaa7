#include "Lists/SessionList.h"

#include <gtest/gtest.h>
#include <time.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "SessionState/SessionSnapshotCoding.h"
#include "Support/EnvironmentVariable.h"
#include "Support/SampleEvents.h"

namespace tallowbrook::host {
namespace {

using std::chrono::hours;
using std::chrono::microseconds;
using std::chrono::minutes;
using Names = std::vector<std::string>;

SessionSnapshot session(const std::string& id, SessionStatus status,
                        Instant lastSeenAt = sampleTime, Provider provider = Provider::claudeCode) {
    AgentEvent event = minimalEvent();
    event.observedAt = lastSeenAt;
    event.cwd = "/Users/x/proj";
    SessionSnapshot snapshot = SessionSnapshot::initial({provider, id}, event);
    snapshot.status = status;
    return snapshot;
}

Names names(const SessionList& list) {
    Names ids;
    for (const auto& listed : list.sessions) ids.push_back(listed.snapshot.id());
    return ids;
}

// The second line of the table: the first session's.
std::string rowOf(const SessionSnapshot& snapshot, Instant now = sampleTime) {
    const std::string table = SessionList::make({snapshot}, ListScope::all, now).table(now);
    const std::size_t start = table.find('\n') + 1;
    return table.substr(start);
}

TEST(SessionList, beginsWithWhatWaitsForTheUser) {
    using enum SessionStatus;
    const auto list = SessionList::make(
        {session("done", completed), session("new", unknown), session("stopped", interrupted),
         session("busy", working), session("broken", failed), session("asking", needsAttention)},
        ListScope::recent, sampleTime);
    EXPECT_EQ(names(list), (Names{"claudeCode|asking", "claudeCode|broken", "claudeCode|busy",
                                  "claudeCode|stopped", "claudeCode|new", "claudeCode|done"}));
}

AgentPresence presenceOf(AgentState state, const SessionSnapshot& session) {
    return {.state = state,
            .evidence = state == AgentState::gone ? AgentEvidence::process : AgentEvidence::record,
            .since = session.lastSeenAt,
            .judgedAt = session.lastAppliedAt,
            .process = ProcessIdentity{4242, 1},
            .lockWasHeld = false};
}

// The list of one session with what is known of its agent.
SessionList listWith(const SessionSnapshot& session, AgentState state, Instant now = sampleTime) {
    return SessionList::make({session}, ListScope::all, now, {},
                             {{session.id(), presenceOf(state, session)}});
}

std::string statusWith(SessionStatus status, AgentState state, Instant now = sampleTime) {
    const auto table = listWith(session("S1", status), state, now).table(now);
    const auto row = table.substr(table.find('\n') + 1);
    return row.substr(5, row.find("  ", 5) - 5);
}

TEST(SessionList, goesByWhatIsKnownOfTheAgents) {
    using enum SessionStatus;
    EXPECT_EQ(statusWith(needsAttention, AgentState::idle), "idle");
    EXPECT_EQ(statusWith(needsAttention, AgentState::gone), "ended");
    EXPECT_EQ(statusWith(needsAttention, AgentState::working), "working");
    EXPECT_EQ(statusWith(working, AgentState::waiting), "needs permission");
    EXPECT_EQ(statusWith(working, AgentState::failed), "failed");
    EXPECT_EQ(statusWith(working, AgentState::interrupted), "interrupted");
}

TEST(SessionList, callsNoAgentStaleThatSaysItWorks) {
    EXPECT_EQ(statusWith(SessionStatus::working, AgentState::unknown, sampleTime + hours{1}),
              "stale");
    EXPECT_EQ(statusWith(SessionStatus::working, AgentState::working, sampleTime + hours{1}),
              "working");
}

TEST(SessionList, explainsWhatDecided) {
    auto waiting = session("S1", SessionStatus::needsAttention);
    waiting.lastEventType = "PermissionRequest";
    waiting.lastAppliedAt = sampleTime;
    const auto text = listWith(waiting, AgentState::gone).sessions.front().explanation(sampleTime);
    EXPECT_TRUE(text.starts_with("Its process (4242) is gone, as was seen at ")) << text;
    EXPECT_TRUE(text.contains("The last event that counted is PermissionRequest of ")) << text;
    const auto both =
        listWith(waiting, AgentState::waiting).sessions.front().explanation(sampleTime);
    EXPECT_TRUE(both.starts_with("A permission request was observed")) << both;
    EXPECT_TRUE(both.contains(" Claude Code's own record says waiting for you since ")) << both;
}

TEST(SessionList, tellsProgramsWhatIsKnownOfTheAgent) {
    const auto waiting = session("S1", SessionStatus::needsAttention);
    const auto json = boost::json::parse(listWith(waiting, AgentState::idle).json(sampleTime));
    const auto& listed = json.as_array().front().as_object();
    EXPECT_EQ(listed.at("status"), "interrupted");
    EXPECT_EQ(listed.at("agent").at("state"), "idle");
    EXPECT_EQ(listed.at("agent").at("evidence"), "record");
    EXPECT_EQ(listed.at("snapshot").at("status"), "needsAttention") << "as stored";
}

TEST(SessionList, sortsTheSameStatusByWhenItWasLastHeardOfAndThenById) {
    using enum SessionStatus;
    const auto list = SessionList::make(
        {session("b", completed), session("a", completed, sampleTime, Provider::codexCLI),
         session("older", completed, sampleTime - microseconds{1}), session("a", completed)},
        ListScope::recent, sampleTime);
    EXPECT_EQ(names(list),
              (Names{"claudeCode|a", "claudeCode|b", "codexCLI|a", "claudeCode|older"}));
}

TEST(SessionList, showsAWorkingSessionAsStaleAfterAQuarterOfAnHour) {
    const auto busy = session("S1", SessionStatus::working);
    const auto statusAt = [&](Instant now) {
        return SessionList::make({busy}, ListScope::recent, now).sessions.at(0).status;
    };
    EXPECT_EQ(statusAt(sampleTime + minutes{15}), SessionStatus::working);
    EXPECT_EQ(statusAt(sampleTime + minutes{15} + microseconds{1}), SessionStatus::stale);
}

TEST(SessionList, leavesOutAndCountsWhatIsOlderThanADay) {
    const std::vector snapshots{
        session("limit", SessionStatus::completed, sampleTime - hours{24}),
        session("older", SessionStatus::needsAttention, sampleTime - hours{24} - microseconds{1})};
    const auto recent = SessionList::make(snapshots, ListScope::recent, sampleTime);
    EXPECT_EQ(names(recent), Names{"claudeCode|limit"});
    EXPECT_EQ(recent.olderCount, 1U);
    const auto all = SessionList::make(snapshots, ListScope::all, sampleTime);
    EXPECT_EQ(names(all), (Names{"claudeCode|limit", "claudeCode|older"}));
    EXPECT_EQ(all.olderCount, 0U);
}

TEST(SessionList, numbersASessionAlikeInBothLists) {
    using enum SessionStatus;
    const std::vector snapshots{session("old asking", needsAttention, sampleTime - hours{25}),
                                session("old done", completed, sampleTime - hours{26}),
                                session("done", completed), session("asking", needsAttention)};
    const auto recent = names(SessionList::make(snapshots, ListScope::recent, sampleTime));
    const auto all = names(SessionList::make(snapshots, ListScope::all, sampleTime));
    EXPECT_EQ(recent, (Names{"claudeCode|asking", "claudeCode|done"}));
    EXPECT_EQ(all, (Names{"claudeCode|asking", "claudeCode|done", "claudeCode|old asking",
                          "claudeCode|old done"}));
}

TEST(SessionList, leavesOutTheSetupsOwnSessionsWithoutCountingThem) {
    const std::vector snapshots{
        session("tallowbrook-setup-check-1", SessionStatus::needsAttention),
        session("tallowbrook-setup-check-2", SessionStatus::completed, sampleTime - hours{48})};
    for (const ListScope scope : {ListScope::recent, ListScope::all}) {
        const auto list = SessionList::make(snapshots, scope, sampleTime);
        EXPECT_TRUE(list.sessions.empty());
        EXPECT_EQ(list.olderCount, 0U);
    }
}

TEST(SessionList, namesEachStatusInItsTable) {
    using enum SessionStatus;
    auto permission = session("S", needsAttention);
    permission.attention = AttentionKind::permission;
    auto input = session("S", needsAttention);
    input.attention = AttentionKind::input;
    auto ended = session("S", completed);
    ended.sessionEnded = true;
    auto endedAfterFailure = session("S", failed);
    endedAfterFailure.sessionEnded = true;
    struct Row {
        SessionSnapshot snapshot;
        std::string status;
    };
    auto question = input;
    question.statusDetail.toolName = "AskUserQuestion";
    auto plan = input;
    plan.statusDetail.toolName = "ExitPlanMode";
    for (const auto& [snapshot, status] : {
             Row{permission, "needs permission"},
             Row{session("S", needsAttention), "needs permission"},
             Row{input, "needs input     "},
             Row{question, "has a question  "},
             Row{plan, "has a plan      "},
             Row{session("S", completed), "completed       "},
             Row{ended, "ended           "},
             Row{session("S", working), "working         "},
             Row{session("S", failed), "failed          "},
             Row{endedAfterFailure, "failed          "},
             Row{session("S", interrupted), "interrupted     "},
             Row{session("S", unknown), "unknown         "},
         })
        EXPECT_EQ(
            rowOf(snapshot),
            "  1  " + status + "  Claude Code  proj                      S          just now\n");
    EXPECT_EQ(rowOf(session("S", working), sampleTime + hours{1}),
              "  1  stale             Claude Code  proj                      S          1 h ago\n");
}

TEST(SessionList, keepsItsColumnsWhateverTheProjectIsCalled) {
    struct Row {
        const char* why;
        std::optional<std::string> cwd;
        std::string column;
    };
    for (const auto& [why, cwd, column] : {
             Row{"absent", std::nullopt, "Project unavailable     "},
             Row{"the root", "/", "/                       "},
             Row{"24 letters", "/abcdefghijklmnopqrstuvwx", "abcdefghijklmnopqrstuvwx"},
             Row{"25 letters", "/abcdefghijklmnopqrstuvwxy", "abcdefghijklmnopqrstuvw\xE2\x80\xA6"},
             Row{"wide letters", "/\u65E5\u672C", "\u65E5\u672C                    "},
             Row{"a control character", "/a\tb", "a\uFFFDb                     "},
         }) {
        auto snapshot = session("S", SessionStatus::completed);
        snapshot.cwd = cwd;
        EXPECT_EQ(rowOf(snapshot),
                  "  1  completed         Claude Code  " + column + "  S          just now\n")
            << why;
    }
}

TEST(SessionList, showsOnlyTheBeginningOfLongSessionIds) {
    EXPECT_EQ(rowOf(session("0123456789", SessionStatus::completed)),
              "  1  completed         Claude Code  proj                      "
              "01234567   just now\n");
}

TEST(SessionList, withoutSessionsSaysSo) {
    EXPECT_EQ(SessionList{}.table(sampleTime), "No sessions to show.\n");
    EXPECT_EQ(SessionList{}.json(sampleTime), "[]\n");
}

TEST(SessionList, saysHowManyItLeavesOut) {
    SessionList list;
    list.olderCount = 1;
    EXPECT_EQ(list.table(sampleTime),
              "No sessions to show.\n1 older session is not shown (sessions --all shows all).\n");
    list.olderCount = 2;
    EXPECT_EQ(list.table(sampleTime),
              "No sessions to show.\n2 older sessions are not shown (sessions --all shows all).\n");
}

TEST(SessionList, numbersItsRowsInWidthsThatGrow) {
    std::vector<SessionSnapshot> snapshots;
    for (int i = 0; i < 1000; ++i)
        snapshots.push_back(session("S" + std::to_string(i), SessionStatus::completed));
    const auto table = SessionList::make(snapshots, ListScope::all, sampleTime).table(sampleTime);
    EXPECT_NE(table.find("\n  9  "), std::string::npos);
    EXPECT_NE(table.find("\n 99  "), std::string::npos);
    EXPECT_NE(table.find("\n1000  "), std::string::npos);
}

TEST(SessionList, asJSONHoldsTheSnapshotAndHowItIsShown) {
    const EnvironmentVariable zone{"TZ", "UTC"};
    tzset();
    auto snapshot = session("S\"1", SessionStatus::working);
    snapshot.statusCategory = EventCategory::promptSubmitted;
    const Instant now = sampleTime + hours{1};
    const auto list =
        SessionList::make({snapshot, session("S2", SessionStatus::completed)}, ListScope::all, now);
    const auto sessions = boost::json::parse(list.json(now));
    ASSERT_EQ(sessions.as_array().size(), 2U);
    const auto& first = sessions.as_array()[0].as_object();
    EXPECT_EQ(first.at("id"), "claudeCode|S\"1");
    EXPECT_EQ(first.at("status"), "stale");
    EXPECT_EQ(first.at("project"), "proj");
    EXPECT_EQ(first.at("explanation"),
              "No recent event since 03:30. The agent may still be working, or it stopped without "
              "reporting (for example after an interrupt).");
    EXPECT_EQ(SessionSnapshotCoding::decode(boost::json::serialize(first.at("snapshot"))),
              snapshot);
    EXPECT_EQ(first.at("name"), "proj #1");
    EXPECT_EQ(first.size(), 6U);
}

SessionList listOf(const Names& ids) {
    std::vector<SessionSnapshot> snapshots;
    for (const auto& id : ids) snapshots.push_back(session(id, SessionStatus::completed));
    return SessionList::make(std::move(snapshots), ListScope::all, sampleTime);
}

TEST(SessionList, findsASessionByItsNumber) {
    const auto list = listOf({"aaaa", "bbbb"});
    EXPECT_EQ(list.find("2")->snapshot.key.sessionID, "bbbb");
    EXPECT_FALSE(list.find("0"));
    EXPECT_FALSE(list.find("3"));
}

TEST(SessionList, findsASessionByABeginningThatNoOtherShares) {
    const auto list = listOf({"0199e8a2-41c7", "0199e8a2-0b3f", "9e2d7c41"});
    EXPECT_EQ(list.find("9")->snapshot.key.sessionID, "9e2d7c41");
    EXPECT_EQ(list.find("0199e8a2-4")->snapshot.key.sessionID, "0199e8a2-41c7");
    EXPECT_EQ(list.find("0199").error().text(),
              "2 sessions begin with \"0199\". Give more of the id.");
    EXPECT_EQ(list.find("x").error().text(),
              "There is no session \"x\". \"tallowbrook sessions\" lists them.");
    EXPECT_FALSE(list.find(""));
}

TEST(SessionList, takesAWholeIdThoughItBeginsAnother) {
    EXPECT_EQ(listOf({"abc", "abcd"}).find("abc")->snapshot.key.sessionID, "abc");
}

TEST(SessionList, findsASessionByTheIdThatProgramsKnowItBy) {
    // An id of digits alone would be taken for a number of the list.
    const auto list = listOf({"2", "3"});
    for (const std::string id : {"2", "3"})
        EXPECT_EQ(list.find("claudeCode|" + id)->snapshot.key.sessionID, id);
}

TEST(SessionList, showsAsMuchOfEachIdAsTellsItFromTheOthers) {
    EXPECT_EQ(listOf({}).shortIDLength(), 8U);
    EXPECT_EQ(listOf({"abcdefghij"}).shortIDLength(), 8U);
    EXPECT_EQ(listOf({"0199e8a2-41c7-1", "0199e8a2-41d0-2"}).shortIDLength(), 12U);
    EXPECT_EQ(listOf({"same", "same"}).shortIDLength(), 8U);
}

}  // namespace
}  // namespace tallowbrook::host
