#include "Lists/WatchEvents.h"

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>

#include "Support/SampleSnapshots.h"

namespace tallowbrook::host {
namespace {

SessionList listOf(std::vector<SessionSnapshot> snapshots, Instant now = after(60)) {
    return SessionList::make(std::move(snapshots), ListScope::recent, now);
}

std::vector<boost::json::object> objects(const std::string& lines) {
    std::vector<boost::json::object> parsed;
    std::size_t begin = 0;
    for (std::size_t end; (end = lines.find('\n', begin)) != std::string::npos; begin = end + 1)
        parsed.push_back(boost::json::parse(lines.substr(begin, end - begin)).as_object());
    EXPECT_EQ(begin, lines.size()) << "every line ends";
    return parsed;
}

SessionSnapshot named(const std::string& id) {
    auto session = minimalSnapshot();
    session.key.sessionID = id;
    return session;
}

TEST(NotificationEvent, isAnObjectOnALineOfItsOwn) {
    const NotificationContent content{.kind = NotificationKind::attention,
                                      .title = "Claude Code needs permission",
                                      .body = "proj — waiting\nfor\x1B you.",
                                      .sessionStorageID = "claudeCode|S1",
                                      .dedupeKey = "key"};
    const auto lines = objects(notificationEvent(content, sampleTime));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0], (boost::json::object{{"schema", 1},
                                             {"event", "notification"},
                                             {"at", EventDate::text(sampleTime)},
                                             {"kind", "attention"},
                                             {"title", "Claude Code needs permission"},
                                             {"body", "proj — waiting\nfor\x1B you."},
                                             {"session", "claudeCode|S1"}}));
}

TEST(SessionEvents, tellEverySessionOnceAndThenWhatHasChanged) {
    SessionEvents events;
    EXPECT_EQ(objects(events.changes(listOf({named("a"), named("b")}), after(60))).size(), 2U);
    EXPECT_EQ(events.changes(listOf({named("a"), named("b")}), after(61)), "");
    auto changed = named("b");
    changed.status = SessionStatus::failed;
    const auto lines = objects(events.changes(listOf({named("a"), changed}), after(62)));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].at("schema"), 1);
    EXPECT_EQ(lines[0].at("event"), "session");
    EXPECT_EQ(lines[0].at("id"), "claudeCode|b");
    EXPECT_EQ(lines[0].at("status"), "failed");
    EXPECT_TRUE(lines[0].at("snapshot").is_object());
}

TEST(SessionEvents, tellOfASessionThatTurnsStaleInSilence) {
    auto working = named("a");
    working.status = SessionStatus::working;
    SessionEvents events;
    events.changes(listOf({working}), after(0));
    const auto lines = objects(events.changes(listOf({working}, after(3600)), after(3600)));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].at("status"), "stale");
}

TEST(SessionEvents, tellOfASessionThatComesBackIntoTheList) {
    SessionEvents events;
    events.changes(listOf({named("a")}), after(0));
    EXPECT_EQ(events.changes(listOf({}), after(1)), "");
    EXPECT_EQ(objects(events.changes(listOf({named("a")}), after(2))).size(), 1U);
}

}  // namespace
}  // namespace tallowbrook::host
