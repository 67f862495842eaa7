#include "Watch/Withholding.h"

#include <gtest/gtest.h>

#include <set>

#include "DatabaseAtHome.h"
#include "Support/SampleSnapshots.h"

namespace tallowbrook::host {
namespace {

using Reasons = std::vector<UntoldReason>;

// Two sessions that wait, S1 and S2, in the projects one and two.
struct Withheld : testing::Test {
    DatabaseAtHome home;
    Database database = home.open();
    Outbox outbox{database};
    std::set<std::string> seen;  // by session id
    int asked = 0;
    bool isAwaited = false;
    Withholding withholding{{.ask = [this] { ++asked; },
                             .isAwaited = [this] { return isAwaited; },
                             .isOn =
                                 [this](const SessionSnapshot& session) {
                                     return seen.contains(session.key.sessionID);
                                 }}};

    Withheld() {
        addSession("S1", "/w/one");
        addSession("S2", "/w/two");
    }

    void addSession(const std::string& id, const std::string& directory) {
        auto session = minimalSnapshot();
        session.key = {Provider::claudeCode, id};
        session.cwd = directory;
        session.statusSince = sampleTime;
        SessionStore{database}.addSession(session);
    }

    void add(const std::string& id, NotificationKind kind = NotificationKind::attention) {
        auto content = numberedContent(static_cast<std::uint8_t>(home.rows("notifications") + 1));
        content.sessionStorageID = id.empty() ? "" : "claudeCode|" + id;
        content.kind = kind;
        outbox.add(content, sampleTime, sampleTime, lines);
    }

    bool run(const Mutes& mutes = {}, bool tellsWhileLooking = false) {
        return withholding.run(database, lines, mutes, tellsWhileLooking, sampleTime);
    }

    // The sessions of which something is still to be told.
    std::vector<std::string> pending() {
        std::vector<std::string> ids;
        for (const auto& delivery : outbox.pending("lines"))
            ids.push_back(delivery.notification.content.sessionStorageID);
        return ids;
    }

    Reasons reasons(const std::string& id) {
        Reasons all;
        for (const auto& untold : outbox.untold("claudeCode|" + id)) all.push_back(untold.reason);
        return all;
    }
};

TEST_F(Withheld, isWhatHappensBeforeTheUsersEyes) {
    seen = {"S1"};
    add("S1");
    add("S2");
    EXPECT_TRUE(run());
    EXPECT_EQ(pending(), std::vector<std::string>{"claudeCode|S2"});
    EXPECT_EQ(reasons("S1"), Reasons{UntoldReason::lookedAt});
    EXPECT_EQ(outbox.untold("claudeCode|S1").front().words(), "you were there");
    EXPECT_TRUE(run());
    EXPECT_EQ(asked, 1) << "nothing new is to be told";
}

TEST_F(Withheld, waitsForTheAnswerAndAsksOnce) {
    isAwaited = true;
    add("S1");
    EXPECT_FALSE(run());
    add("S2");
    EXPECT_FALSE(run());
    EXPECT_EQ(asked, 1);
    isAwaited = false;
    EXPECT_TRUE(run());
    EXPECT_EQ(pending().size(), 2U);
    add("S1");
    EXPECT_TRUE(run());
    EXPECT_EQ(asked, 2);
}

TEST_F(Withheld, isNothingWhereTheUserWantsToBeToldAllTheSame) {
    seen = {"S1"};
    add("S1");
    EXPECT_TRUE(run({}, true));
    EXPECT_EQ(pending().size(), 1U);
    EXPECT_EQ(asked, 0);
}

TEST_F(Withheld, isWhatIsMuted) {
    add("S1");
    add("S2");
    EXPECT_TRUE(
        run({{{MuteScope::session, "claudeCode|S1", {}}, {MuteScope::project, "two", {}}}}));
    EXPECT_TRUE(pending().empty());
    EXPECT_EQ(reasons("S1"), Reasons{UntoldReason::muted});
    EXPECT_EQ(reasons("S2"), Reasons{UntoldReason::muted});
}

TEST_F(Withheld, isNothingOfSeveralSessionsAtOnce) {
    seen = {"S1", "S2"};
    add("");
    EXPECT_TRUE(run({{{MuteScope::session, "", {}}}}));
    EXPECT_EQ(pending().size(), 1U);
}

TEST_F(Withheld, aReminderIsNotLostByTheUsersPresence) {
    const SessionKey key{Provider::claudeCode, "S1"};
    outbox.setReminderCount(key, {sampleTime, 2, sampleTime});
    seen = {"S1"};
    add("S1", NotificationKind::reminder);
    EXPECT_TRUE(run());
    EXPECT_TRUE(pending().empty());
    EXPECT_EQ(outbox.reminderCount(key), (ReminderCount{sampleTime, 1, sampleTime}));
}

TEST_F(Withheld, isWhatNoChannelHasBegun) {
    seen = {"S1"};
    add("S1");
    const auto number = outbox.pending("lines").front().notification.number;
    outbox.markTold(number, "lines", sampleTime);
    EXPECT_TRUE(run());
    EXPECT_TRUE(reasons("S1").empty());
}

}  // namespace
}  // namespace tallowbrook::host
