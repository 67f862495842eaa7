#include "SessionState/SessionSnapshotCoding.h"

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <limits>
#include <string>

#include "Support/SampleSnapshots.h"

namespace tallowbrook {
namespace {

using boost::json::object;

object encodedObject(const SessionSnapshot& snapshot) {
    return boost::json::parse(SessionSnapshotCoding::encode(snapshot)).as_object();
}

std::expected<SessionSnapshot, DecodingError> decodedObject(const object& members) {
    return SessionSnapshotCoding::decode(boost::json::serialize(members));
}

TEST(SessionSnapshotCoding, writesEveryFieldUnderItsName) {
    EXPECT_EQ(SessionSnapshotCoding::encode(fullSnapshot()),
              R"({"attention":"input","cwd":"/Users/x/proj","endReason":"logout",)"
              R"("endedAt":"2026-11-15T03:31:25.123Z","eventCount":42,)"
              R"("firstSeenAt":"2026-11-15T03:31:05.123Z",)"
              R"("key":{"provider":"codexCLI","sessionID":"session-1"},)"
              R"("lastAppliedAt":"2026-11-15T03:31:45.123Z","lastCompletedTurnID":"turn:1",)"
              R"("lastEventType":"PostToolUse","lastSeenAt":"2026-11-15T03:31:55.123Z",)"
              R"("lastSignature":"hook|PostToolUse|activity|||||||",)"
              R"("lastSignatureAt":"2026-11-15T03:31:50.123Z","origin":"demo","promptCount":7,)"
              R"("sessionEnded":true,"status":"needsAttention",)"
              R"("statusCategory":"attentionRequested",)"
              R"("statusDetail":{"endReason":"other","errorType":"server_error",)"
              R"("notificationType":"idle_prompt","sessionSource":"startup","toolName":"Bash"},)"
              R"("statusEventType":"Notification","statusSince":"2026-11-15T03:31:35.123Z",)"
              R"("tty":"ttys003"})");
}

TEST(SessionSnapshotCoding, leavesOutWhatIsAbsent) {
    EXPECT_EQ(SessionSnapshotCoding::encode(minimalSnapshot()),
              R"({"eventCount":0,"firstSeenAt":"2026-11-15T03:30:55.123Z",)"
              R"("key":{"provider":"claudeCode","sessionID":"S1"},)"
              R"("lastAppliedAt":"0001-01-01T00:00:00.000Z","lastEventType":"Stop",)"
              R"("lastSeenAt":"2026-11-15T03:30:55.123Z","origin":"live","promptCount":0,)"
              R"("sessionEnded":false,"status":"unknown","statusCategory":"turnCompleted",)"
              R"("statusDetail":{},"statusEventType":"Stop",)"
              R"("statusSince":"2026-11-15T03:30:55.123Z"})");
}

TEST(SessionSnapshotCoding, readsBackWhatItWrites) {
    const auto readBack = [](const SessionSnapshot& snapshot) {
        return SessionSnapshotCoding::decode(SessionSnapshotCoding::encode(snapshot));
    };
    SessionSnapshot snapshot = minimalSnapshot();
    EXPECT_EQ(readBack(snapshot), snapshot);
    snapshot.lastSeenAt += std::chrono::microseconds{999};
    EXPECT_EQ(readBack(snapshot), minimalSnapshot()) << "times are cut below a millisecond";

    snapshot = fullSnapshot();
    snapshot.cwd = "/a/\"quoted\" \\ Übung \U0001F600 \x01\n";
    snapshot.tty = "";
    snapshot.promptCount = std::numeric_limits<std::int64_t>::max();
    snapshot.eventCount = std::numeric_limits<std::int64_t>::min();
    for (const auto status : allCases<SessionStatus>()) {
        snapshot.status = status;
        EXPECT_EQ(readBack(snapshot), snapshot);
    }
}

TEST(SessionSnapshotCoding, failsWithoutAnyFieldThatIsNotOptional) {
    for (const char* name :
         {"key", "origin", "status", "statusEventType", "statusCategory", "statusDetail",
          "statusSince", "firstSeenAt", "lastSeenAt", "lastAppliedAt", "lastEventType",
          "sessionEnded", "promptCount", "eventCount"}) {
        object members = encodedObject(fullSnapshot());
        ASSERT_EQ(members.erase(name), 1) << name;
        EXPECT_FALSE(decodedObject(members)) << name;
        members[name] = nullptr;
        EXPECT_FALSE(decodedObject(members)) << name;
    }
    for (const char* name : {"provider", "sessionID"}) {
        object members = encodedObject(fullSnapshot());
        ASSERT_EQ(members["key"].as_object().erase(name), 1) << name;
        EXPECT_FALSE(decodedObject(members)) << name;
    }
}

TEST(SessionSnapshotCoding, takesAnOptionalFieldThatIsMissingOrNullAsAbsent) {
    const object written = encodedObject(minimalSnapshot());
    object nulls = written;
    for (const char* name : {"attention", "cwd", "tty", "endedAt", "endReason",
                             "lastCompletedTurnID", "lastSignature", "lastSignatureAt"}) {
        ASSERT_FALSE(written.contains(name)) << name;
        nulls[name] = nullptr;
    }
    for (const char* name :
         {"notificationType", "toolName", "sessionSource", "endReason", "errorType"})
        nulls["statusDetail"].as_object()[name] = nullptr;
    nulls["addedLater"] = nulls["key"].as_object()["addedLater"] = 1;
    EXPECT_EQ(decodedObject(nulls), minimalSnapshot()) << "unknown members are passed over";
}

TEST(SessionSnapshotCoding, failsOnAFieldOfAnotherTypeOrAnUnknownValue) {
    struct Row {
        const char* name;
        boost::json::value value;
    };
    for (const auto& [name, value] : {
             Row{"key", "codexCLI|session-1"},
             Row{"key", object{{"provider", "another"}, {"sessionID", "s"}}},
             Row{"key", object{{"provider", "codexCLI"}, {"sessionID", 1}}},
             Row{"origin", "production"},
             Row{"status", "Working"},
             Row{"status", 1},
             Row{"attention", "none"},
             Row{"attention", true},
             Row{"statusEventType", 1},
             Row{"statusCategory", "other"},
             Row{"statusDetail", "detail"},
             Row{"statusDetail", object{{"toolName", 1}}},
             Row{"statusSince", 1794713455},
             Row{"firstSeenAt", "2026-11-15"},
             Row{"lastSeenAt", "2026-11-15T03:30:55.1Z"},
             Row{"lastAppliedAt", "0000-12-31T00:00:00.000Z"},
             Row{"lastEventType", false},
             Row{"cwd", 1},
             Row{"tty", object{}},
             Row{"sessionEnded", 1},
             Row{"sessionEnded", "true"},
             Row{"endedAt", "yesterday"},
             Row{"endReason", 1},
             Row{"promptCount", "7"},
             Row{"promptCount", 7.5},
             Row{"lastCompletedTurnID", 1},
             Row{"lastSignature", false},
             Row{"lastSignatureAt", 55},
             Row{"eventCount", 9223372036854775808u},
         }) {
        object members = encodedObject(fullSnapshot());
        members[name] = value;
        EXPECT_FALSE(decodedObject(members)) << name << " " << boost::json::serialize(value);
    }
    for (const char* text : {"", "null", "[]", "\"text\"", "{", "{}", "{\"key\":}"})
        EXPECT_FALSE(SessionSnapshotCoding::decode(text)) << text;
}

}  // namespace
}  // namespace tallowbrook
