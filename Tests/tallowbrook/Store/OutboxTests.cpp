// The memory of notifications: what is still to be told by which channel, what was, and when.
#include "Store/Outbox.h"

#include <gtest/gtest.h>

#include "DatabaseAtHome.h"

namespace tallowbrook::host {
namespace {

using std::chrono::seconds;

using Titles = std::vector<std::string>;

const std::string key = "claudeCode|S1|completion";
const std::vector<std::string> twoChannels{"desktop", "lines"};

struct StoredNotifications : testing::Test {
    DatabaseAtHome home;
    Database database = home.open();
    Outbox outbox{database};

    std::int64_t add(std::uint8_t number, const std::vector<std::string>& channels = lines,
                     Instant decidedAt = sampleTime) {
        outbox.add(numberedContent(number), sampleTime, decidedAt, channels);
        return home.connection().execAndGet("SELECT max(number) FROM notifications").getInt64();
    }

    Titles pending(const std::string& channel = "lines") {
        Titles titles;
        for (const auto& delivery : outbox.pending(channel))
            titles.push_back(delivery.notification.content.title);
        return titles;
    }

    Titles toldSince(std::int64_t place) {
        Titles titles;
        for (const auto& told : outbox.toldSince(place))
            titles.push_back(told.notification.content.title);
        return titles;
    }
};

TEST_F(StoredNotifications, comeBackAsTheyWere) {
    NotificationContent content{.kind = NotificationKind::reminder,
                                .title = "Claude Code needs permission",
                                .body = "proj \xE2\x80\x94 'quoted' \"text\"\n",
                                .sessionStorageID = "claudeCode|S1",
                                .eventID = numberedID(9),
                                .dedupeKey = "claudeCode|S1|reminder",
                                .playSound = true};
    for (const NotificationKind kind : allCases<NotificationKind>()) {
        content.kind = kind;
        content.playSound = !content.playSound;
        outbox.add(content, sampleTime, sampleTime + seconds{1}, lines);
        const auto pending = outbox.pending("lines");
        ASSERT_FALSE(pending.empty());
        EXPECT_EQ(pending.back().notification.content, content);
        EXPECT_EQ(pending.back().notification.observedAt, sampleTime);
        EXPECT_EQ(pending.back().dueAt, sampleTime + seconds{1});
    }
}

TEST_F(StoredNotifications, arePendingInTheirOrderUntilToldRefusedOrBegun) {
    for (std::uint8_t i = 1; i <= 3; ++i) add(i);
    const auto begun = add(4);
    const auto refused = add(5);
    EXPECT_EQ(pending(), (Titles{"title 1", "title 2", "title 3", "title 4", "title 5"}));

    outbox.markTold(2, "lines", sampleTime);
    outbox.markBegun(begun, "lines");
    outbox.markRefused(refused, "lines");
    EXPECT_EQ(pending(), (Titles{"title 1", "title 3"}));
    EXPECT_EQ(toldSince(0), Titles{"title 2"});
}

TEST_F(StoredNotifications, haveAStateForEachChannel) {
    const auto number = add(1, twoChannels);
    outbox.markTold(number, "desktop", sampleTime);
    EXPECT_TRUE(pending("desktop").empty());
    EXPECT_EQ(pending("lines"), Titles{"title 1"});
    EXPECT_TRUE(pending("other").empty());
}

TEST_F(StoredNotifications, areTriedAgainWhenTheirTimeHasCome) {
    const auto number = add(1);
    outbox.postpone(number, "lines", sampleTime + seconds{7});
    const auto pending = outbox.pending("lines");
    ASSERT_EQ(pending.size(), 1U);
    EXPECT_EQ(pending[0].attempts, 1);
    EXPECT_EQ(pending[0].dueAt, sampleTime + seconds{7});

    // The next host tries at once.
    outbox.recover("lines", true);
    EXPECT_LT(outbox.pending("lines")[0].dueAt, sampleTime);
}

TEST_F(StoredNotifications, thatWereCutOffAreTriedAgainUnlessThatDoesHarm) {
    const auto number = add(1, twoChannels);
    for (const auto& channel : twoChannels) outbox.markBegun(number, channel);
    outbox.recover("lines", true);
    outbox.recover("desktop", false);
    EXPECT_EQ(pending("lines"), Titles{"title 1"});
    EXPECT_TRUE(pending("desktop").empty());
    EXPECT_EQ(home.text("SELECT state FROM deliveries WHERE channel = 'desktop'"), "refused");
}

TEST_F(StoredNotifications, areDroppedByEveryChannelOnceTheyAreOld) {
    outbox.add(numberedContent(1), sampleTime - seconds{1}, sampleTime, twoChannels);
    outbox.add(numberedContent(2), sampleTime, sampleTime, twoChannels);
    outbox.add(numberedContent(3), sampleTime - seconds{1}, sampleTime, twoChannels);
    outbox.markTold(3, "lines", sampleTime);

    const auto dropped = outbox.dropOlderThan(sampleTime);
    ASSERT_EQ(dropped.size(), 1U) << "one channel has told the third";
    EXPECT_EQ(dropped[0].content.title, "title 1");
    for (const auto& channel : twoChannels) EXPECT_EQ(pending(channel), Titles{"title 2"});
    EXPECT_TRUE(outbox.dropOlderThan(sampleTime).empty());
}

TEST_F(StoredNotifications, ofAWaitThatIsOverAreGivenUp) {
    for (const auto kind : {NotificationKind::attention, NotificationKind::reminder,
                            NotificationKind::completion, NotificationKind::attention}) {
        auto content = numberedContent(1);
        content.kind = kind;
        outbox.add(content, sampleTime, sampleTime, lines);
    }
    outbox.markBegun(4, "lines");
    outbox.dropWaiting("claudeCode|S2");
    EXPECT_EQ(outbox.pending("lines").size(), 3U);
    outbox.dropWaiting("claudeCode|S1");
    const auto pending = outbox.pending("lines");
    ASSERT_EQ(pending.size(), 1U);
    EXPECT_EQ(pending.front().notification.content.kind, NotificationKind::completion);
    outbox.recover("lines", true);
    EXPECT_EQ(outbox.pending("lines").size(), 2U) << "what was begun is the channel's";
}

TEST_F(StoredNotifications, areShownOnceByAnotherHostInTheOrderOfTelling) {
    for (std::uint8_t i = 1; i <= 3; ++i) add(i, twoChannels);
    outbox.markTold(2, "lines", sampleTime);
    // A clock that is set back changes nothing.
    outbox.markTold(1, "lines", sampleTime - seconds{60});
    outbox.markTold(2, "desktop", sampleTime);
    EXPECT_EQ(toldSince(0), (Titles{"title 2", "title 1"}));
    const auto first = outbox.toldSince(0).front().place;
    EXPECT_EQ(toldSince(first), Titles{"title 1"});
    EXPECT_EQ(toldSince(outbox.newestPlace()), Titles{});
}

TEST_F(StoredNotifications, wereLastDeliveredWhenToldOrElseDecided) {
    EXPECT_EQ(outbox.lastDelivered(key), std::nullopt);

    const auto first = add(1, twoChannels, sampleTime + seconds{1});
    EXPECT_EQ(outbox.lastDelivered(key), sampleTime + seconds{1});
    outbox.markTold(first, "lines", sampleTime + seconds{5});
    EXPECT_EQ(outbox.lastDelivered(key), sampleTime + seconds{5});
    EXPECT_EQ(outbox.lastDelivered("claudeCode|S1|attention"), std::nullopt);

    const auto second = add(2, lines, sampleTime + seconds{9});
    EXPECT_EQ(outbox.lastDelivered(key), sampleTime + seconds{9});
    // The user never heard of it.
    outbox.markRefused(second, "lines");
    EXPECT_EQ(outbox.lastDelivered(key), sampleTime + seconds{5});
}

TEST_F(StoredNotifications, areHandedOnToOtherChannelsOnce) {
    const auto first = add(1, twoChannels);
    add(2, twoChannels);
    add(3);
    outbox.markTold(first, "lines", sampleTime);
    EXPECT_TRUE(outbox.handOn("desktop", {"lines", "terminal"}));
    EXPECT_EQ(pending("terminal"), (Titles{"title 1", "title 2"}));
    EXPECT_EQ(pending("lines"), (Titles{"title 2", "title 3"})) << "what was told stays told";
    EXPECT_TRUE(pending("desktop").empty());
    EXPECT_FALSE(outbox.handOn("desktop", {"lines", "terminal"}));
}

TEST_F(StoredNotifications, areNotHandedOnWhileTheirChannelIsAtThem) {
    outbox.markBegun(add(1, {"desktop"}), "desktop");
    EXPECT_FALSE(outbox.handOn("desktop", {"terminal"}));
    EXPECT_TRUE(pending("terminal").empty());
}

TEST_F(StoredNotifications, tellTheirSession) {
    EXPECT_EQ(outbox.sessionOf(add(1)), "claudeCode|S1");
    EXPECT_EQ(outbox.sessionOf(999), std::nullopt);
}

}  // namespace
}  // namespace tallowbrook::host
