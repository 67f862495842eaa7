#include "Watch/Notifier.h"

#include <gtest/gtest.h>

#include "StoreAtHome.h"

namespace tallowbrook::host {
namespace {

using std::chrono::microseconds;
using std::chrono::minutes;

constexpr Seconds maxAge{600.0};

using Titles = std::vector<std::string>;

struct Outbox : testing::Test {
    StoreAtHome home;
    EventStore store = home.open();
    Titles heard;

    // Hands over until it has done so `limit` times.
    Notifier hearing(std::size_t limit = 100) {
        return {[this, limit](const NotificationContent& content) {
            if (heard.size() == limit) return false;
            heard.push_back(content.title);
            return true;
        }};
    }

    void add(std::uint8_t number, Instant observedAt = sampleTime) {
        store.addNotification(numberedContent(number), observedAt, observedAt);
    }

    std::string states() const {
        return home.text("SELECT coalesce(group_concat(state), '') FROM notifications");
    }
};

TEST_F(Outbox, isHandedOverInItsOrderAndRecorded) {
    for (std::uint8_t i = 1; i <= 3; ++i) add(i);
    deliverPending(store, hearing(), maxAge, sampleTime + minutes{1});
    EXPECT_EQ(heard, (Titles{"title 1", "title 2", "title 3"}));
    EXPECT_EQ(states(), "told,told,told");
    EXPECT_EQ(store.lastDelivered("claudeCode|S1|completion"), sampleTime + minutes{1});
}

TEST_F(Outbox, isHandedOverOnce) {
    add(1);
    deliverPending(store, hearing(), maxAge, sampleTime);
    deliverPending(store, hearing(), maxAge, sampleTime);
    EXPECT_EQ(heard, Titles{"title 1"});
}

TEST_F(Outbox, thatIsEmptyIsNoWork) {
    EXPECT_TRUE(deliverPending(store, hearing(0), maxAge, sampleTime));
    EXPECT_EQ(heard, Titles{});
}

TEST_F(Outbox, staysPendingFromTheFirstThatCannotBeHandedOver) {
    for (std::uint8_t i = 1; i <= 3; ++i) add(i);
    EXPECT_FALSE(deliverPending(store, hearing(1), maxAge, sampleTime));
    EXPECT_EQ(heard, Titles{"title 1"});
    EXPECT_EQ(states(), "told,pending,pending");

    EXPECT_TRUE(deliverPending(store, hearing(), maxAge, sampleTime));
    EXPECT_EQ(heard, (Titles{"title 1", "title 2", "title 3"}));
    EXPECT_EQ(states(), "told,told,told");
}

TEST_F(Outbox, dropsWhatHasBecomeTooOldAndTellsTheRest) {
    const Instant now = sampleTime + minutes{10};
    add(1, sampleTime - microseconds{1});
    add(2, sampleTime);
    add(3, now);
    EXPECT_TRUE(deliverPending(store, hearing(), maxAge, now));
    EXPECT_EQ(heard, (Titles{"title 2", "title 3"}));
    EXPECT_EQ(states(), "dropped,told,told");
    // It does not come back when the clock is set back.
    deliverPending(store, hearing(), maxAge, sampleTime);
    EXPECT_EQ(heard.size(), 2U);
}

TEST_F(Outbox, tellsAnEventFromTheFuture) {
    add(1, sampleTime + minutes{60});
    deliverPending(store, hearing(), maxAge, sampleTime);
    EXPECT_EQ(heard, Titles{"title 1"});
}

TEST_F(Outbox, staysPendingWhenTheStoreCannotRecordIt) {
    for (std::uint8_t i = 1; i <= 2; ++i) add(i);
    home.execute(
        "CREATE TRIGGER refuse BEFORE UPDATE ON notifications WHEN NEW.title = 'title 2'"
        " BEGIN SELECT RAISE(ABORT, 'refused'); END");
    EXPECT_THROW(deliverPending(store, hearing(), maxAge, sampleTime), SQLite::Exception);
    EXPECT_EQ(states(), "told,pending");

    home.execute("DROP TRIGGER refuse");
    heard.clear();
    deliverPending(store, hearing(), maxAge, sampleTime);
    EXPECT_EQ(heard, Titles{"title 2"});
}

}  // namespace
}  // namespace tallowbrook::host
