#include "Watch/Deliveries.h"

#include <gtest/gtest.h>

#include "DatabaseAtHome.h"
#include "FakeChannel.h"

namespace tallowbrook::host {
namespace {

using std::chrono::seconds;

using Answer = FakeChannel::Answer;
using Titles = std::vector<std::string>;

struct Delivering : testing::Test {
    DatabaseAtHome home;
    Database database = home.open();
    Outbox outbox{database};
    FakeChannel fake;
    Channel channel = fake.channel();
    Instant now = sampleTime;

    void add(std::uint8_t number, const std::vector<std::string>& channels = lines) {
        outbox.add(numberedContent(number), sampleTime, sampleTime, channels);
    }

    DeliveryOutlook deliverNow() {
        return deliver(channel, outbox, [this] { return now; });
    }

    std::string states(const std::string& name = "lines") const {
        return home.text(
            "SELECT coalesce(group_concat(state), '') FROM deliveries WHERE channel = '" + name +
            "'");
    }
};

TEST_F(Delivering, handsOverInTheOrderOfTheDecisionsAndOnce) {
    for (std::uint8_t i = 1; i <= 3; ++i) add(i);
    now = sampleTime + seconds{60};
    deliverNow();
    EXPECT_EQ(fake.takeHeard(), (Titles{"title 1", "title 2", "title 3"}));
    EXPECT_EQ(states(), "told,told,told");
    EXPECT_EQ(outbox.lastDelivered("claudeCode|S1|completion"), now);
    deliverNow();
    EXPECT_TRUE(fake.takeHeard().empty());
}

TEST_F(Delivering, stopsAtTheFirstThatFailsAndGoesOnWithItWhenItIsDue) {
    for (std::uint8_t i = 1; i <= 3; ++i) add(i);
    fake.state->answers = {Answer::handsOver, Answer::fails};
    const auto outlook = deliverNow();
    EXPECT_TRUE(outlook.failed);
    ASSERT_TRUE(outlook.next);
    EXPECT_GT(*outlook.next, now);
    EXPECT_EQ(states(), "told,pending,pending");
    EXPECT_EQ(fake.takeHeard(), Titles{"title 1"});

    const auto early = deliverNow();
    EXPECT_FALSE(early.failed);
    EXPECT_EQ(early.next, outlook.next);
    EXPECT_TRUE(fake.takeHeard().empty()) << "the third must not come before the second";

    now = *outlook.next;
    EXPECT_EQ(deliverNow().next, std::nullopt);
    EXPECT_EQ(fake.takeHeard(), (Titles{"title 2", "title 3"}));
}

TEST_F(Delivering, triesAgainSoonAlsoAfterTheClockWasSetBack) {
    add(1);
    fake.state->answers = {Answer::fails};
    EXPECT_TRUE(deliverNow().failed);
    now -= std::chrono::days{30};
    EXPECT_EQ(deliverNow().next, std::nullopt);
    EXPECT_EQ(fake.takeHeard(), Titles{"title 1"});
}

TEST_F(Delivering, stopsNoOtherChannel) {
    add(1, {"desktop", "lines"});
    const FakeChannel dead;
    dead.state->answers = {Answer::fails};
    const auto time = [this] { return now; };
    EXPECT_TRUE(deliver(dead.channel("desktop"), outbox, time).failed);
    EXPECT_FALSE(deliverNow().failed);
    EXPECT_EQ(fake.takeHeard(), Titles{"title 1"});
    EXPECT_EQ(states("desktop"), "pending");
}

TEST_F(Delivering, givesUpWhatTheChannelRefuses) {
    for (std::uint8_t i = 1; i <= 2; ++i) add(i);
    fake.state->answers = {Answer::refuses};
    EXPECT_FALSE(deliverNow().failed);
    EXPECT_EQ(states(), "refused,told");
}

TEST_F(Delivering, waitsForAnAnswerThatComesLater) {
    for (std::uint8_t i = 1; i <= 2; ++i) add(i);
    fake.state->answers = {Answer::later, Answer::later};
    deliverNow();
    deliverNow();
    EXPECT_EQ(states(), "begun,begun");
    EXPECT_EQ(fake.state->begun.size(), 2U) << "each is begun once";

    fake.state->events = {{ChannelEvent::Kind::failed, fake.state->begun[1]},
                          {ChannelEvent::Kind::handedOver, fake.state->begun[0]}};
    EXPECT_TRUE(deliverNow().failed);
    EXPECT_EQ(states(), "told,pending");
}

TEST_F(Delivering, takesNoClickForAnAnswer) {
    add(1);
    fake.state->answers = {Answer::later};
    fake.state->onBegin = [this](std::int64_t number) {
        fake.state->events = {{ChannelEvent::Kind::clicked, number}};
    };
    EXPECT_EQ(deliverNow().clicked, fake.state->begun);
    EXPECT_EQ(states(), "begun");
}

TEST_F(Delivering, isWrittenDownBeforehandWhereTellingTwiceDoesHarm) {
    add(1);
    fake.state->toldTwiceHarms = true;
    channel.begin = [this](const Delivery&) { EXPECT_EQ(states(), "begun"); };
    deliverNow();
}

TEST_F(Delivering, isDoneAgainWhenItCouldNotBeWrittenDown) {
    for (std::uint8_t i = 1; i <= 2; ++i) add(i);
    home.execute(
        "CREATE TRIGGER refuse BEFORE UPDATE ON deliveries WHEN NEW.notification = 2"
        " BEGIN SELECT RAISE(ABORT, 'refused'); END");
    EXPECT_THROW(deliverNow(), SQLite::Exception);
    EXPECT_EQ(states(), "told,pending");

    home.execute("DROP TRIGGER refuse");
    fake.takeHeard();
    deliverNow();
    EXPECT_EQ(fake.takeHeard(), Titles{"title 2"});
}

}  // namespace
}  // namespace tallowbrook::host
