// The store's memory of notifications: what is still to be told, what was, and when.
#include <gtest/gtest.h>

#include "StoreAtHome.h"

namespace tallowbrook::host {
namespace {

using std::chrono::seconds;

const std::string key = "claudeCode|S1|completion";

std::vector<std::string> titles(const std::vector<StoredNotification>& notifications) {
    std::vector<std::string> texts;
    for (const auto& notification : notifications) texts.push_back(notification.content.title);
    return texts;
}

using Titles = std::vector<std::string>;

TEST(StoredNotifications, comeBackAsTheyWere) {
    const StoreAtHome home;
    EventStore store = home.open();
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
        store.addNotification(content, sampleTime, sampleTime + seconds{1});
        const auto pending = store.pendingNotifications();
        ASSERT_FALSE(pending.empty());
        EXPECT_EQ(pending.back().content, content);
        EXPECT_EQ(pending.back().observedAt, sampleTime);
    }
}

TEST(StoredNotifications, arePendingUntilToldOrDropped) {
    const StoreAtHome home;
    EventStore store = home.open();
    for (std::uint8_t i = 1; i <= 4; ++i)
        store.addNotification(numberedContent(i), sampleTime, sampleTime);
    const auto all = store.pendingNotifications();
    EXPECT_EQ(titles(all), (Titles{"title 1", "title 2", "title 3", "title 4"}));

    store.markTold(all[1].number, sampleTime);
    store.markDropped(all[2].number);
    EXPECT_EQ(titles(store.pendingNotifications()), (Titles{"title 1", "title 4"}));
    EXPECT_EQ(titles(store.toldNotifications(0)), Titles{"title 2"});
    EXPECT_EQ(home.text("SELECT group_concat(state) FROM notifications ORDER BY number"),
              "pending,told,dropped,pending");
}

TEST(StoredNotifications, thatWereToldAreFoundByWhoKnowsTheLastOne) {
    const StoreAtHome home;
    EventStore store = home.open();
    for (std::uint8_t i = 1; i <= 3; ++i)
        store.addNotification(numberedContent(i), sampleTime, sampleTime);
    for (const auto& notification : store.pendingNotifications())
        store.markTold(notification.number, sampleTime);
    const auto told = store.toldNotifications(0);
    EXPECT_EQ(titles(told), (Titles{"title 1", "title 2", "title 3"}));
    EXPECT_EQ(titles(store.toldNotifications(told[0].number)), (Titles{"title 2", "title 3"}));
    EXPECT_EQ(titles(store.toldNotifications(told[2].number)), Titles{});
    EXPECT_EQ(store.newestToldNotification(), told[2].number);
    store.addNotification(numberedContent(4), sampleTime, sampleTime);
    EXPECT_EQ(store.newestToldNotification(), told[2].number) << "the fourth is not told yet";
}

TEST(StoredNotifications, wereLastDeliveredWhenToldOrElseDecided) {
    const StoreAtHome home;
    EventStore store = home.open();
    EXPECT_EQ(store.lastDelivered(key), std::nullopt);

    store.addNotification(numberedContent(1), sampleTime, sampleTime + seconds{1});
    EXPECT_EQ(store.lastDelivered(key), sampleTime + seconds{1});
    store.markTold(store.pendingNotifications().back().number, sampleTime + seconds{5});
    EXPECT_EQ(store.lastDelivered(key), sampleTime + seconds{5});
    EXPECT_EQ(store.lastDelivered("claudeCode|S1|attention"), std::nullopt);

    store.addNotification(numberedContent(2), sampleTime, sampleTime + seconds{9});
    EXPECT_EQ(store.lastDelivered(key), sampleTime + seconds{9});
    // Nobody heard of it.
    store.markDropped(store.pendingNotifications().back().number);
    EXPECT_EQ(store.lastDelivered(key), sampleTime + seconds{5});
}

TEST(StoredNotifications, keepTheirNumbersApartAcrossPrograms) {
    const StoreAtHome home;
    {
        EventStore store = home.open();
        store.addNotification(numberedContent(1), sampleTime, sampleTime);
    }
    EventStore store = home.open();
    const auto first = store.pendingNotifications().back().number;
    store.addNotification(numberedContent(2), sampleTime, sampleTime);
    EXPECT_GT(store.pendingNotifications().back().number, first);
    EXPECT_EQ(titles(store.pendingNotifications()), (Titles{"title 1", "title 2"}));
}

}  // namespace
}  // namespace tallowbrook::host
