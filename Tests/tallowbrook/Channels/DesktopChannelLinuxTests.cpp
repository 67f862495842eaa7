// The desktop channel on a bus of its own, with a notification service that does what it is told.
#include "Channels/DesktopChannel.h"

#include <gtest/gtest.h>

#include <optional>

#include "FakeServiceLinux.h"
#include "Support/PrivateBusLinux.h"
#include "Support/RepeatedText.h"
#include "Support/WaitUntil.h"

namespace tallowbrook::host {
namespace {

using Kind = ChannelEvent::Kind;
using Events = std::vector<ChannelEvent>;
using Texts = std::vector<std::string>;
using Answers = FakeService::Answers;

NotificationContent contentOf(const std::string& session,
                              NotificationKind kind = NotificationKind::attention) {
    return {.kind = kind,
            .title = "Claude Code needs permission",
            .body = "proj — waiting for approval.",
            .sessionStorageID = session,
            .eventID = {},
            .dedupeKey = {},
            .playSound = true};
}

struct OnTheDesktop : testing::Test {
    PrivateBus bus;
    std::optional<FakeService> service{std::in_place};
    PollLoop loop;
    std::optional<Channel> channel{makeDesktopChannel()};
    PollLoop::Attachment attachment = loop.attach(*channel->source);
    PollLoop::Attachment clock = loop.attach(
        {.interest =
             [] {
                 return PollInterest{
                     -1, 0, std::chrono::steady_clock::now() + std::chrono::milliseconds{2}};
             },
         .proceed = [](short) {}});
    Events events;

    void letGoOn() {
        if (service) service->act();
        loop.runOnce();
        for (const auto& event : channel->takeEvents()) events.push_back(event);
    }
    // For what must not happen: several turns of the bus.
    void letGoOnForAWhile() {
        for (int turn = 0; turn < 50; ++turn) letGoOn();
    }
    void until(const std::function<bool()>& hasCome) {
        waitUntil([&] {
            letGoOn();
            return hasCome();
        });
    }
    void untilKnown() {
        channel->prepare();
        until([this] { return !channel->state().isFindingOut; });
    }
    void untilEvents(std::size_t count) {
        until([&] { return events.size() >= count; });
    }
    void begin(std::int64_t number, const NotificationContent& content) const {
        channel->begin({number, content});
    }
    // Shows one and takes the event that it was handed over.
    const FakeService::Shown& show(std::int64_t number, const NotificationContent& content) {
        begin(number, content);
        untilEvents(1);
        EXPECT_EQ(std::exchange(events, {}), (Events{{Kind::handedOver, number}}));
        return service->shown.back();
    }
    std::string reason() const { return channel->state().reason; }
};

TEST_F(OnTheDesktop, showsANotificationThatStaysUntilTheUserWasThere) {
    untilKnown();
    EXPECT_TRUE(channel->state().isUsable);
    EXPECT_TRUE(channel->state().clicks);
    EXPECT_EQ(reason(), "fake 2.0 on the session bus");
    const auto& shown = show(7, contentOf("claudeCode|S1"));
    EXPECT_EQ(shown.title, "Claude Code needs permission");
    EXPECT_EQ(shown.body, "proj — waiting for approval.");
    EXPECT_EQ(shown.actions, (Texts{"default", "Show", "show", "Show"}));
    EXPECT_EQ(shown.hints.at("desktop-entry"), "tallowbrook");
    EXPECT_EQ(shown.urgency, 2);
    EXPECT_EQ(shown.expires, 0);
}

TEST_F(OnTheDesktop, isLessUrgentWhereNobodyIsWaitedFor) {
    untilKnown();
    for (const auto kind : {NotificationKind::completion, NotificationKind::failure}) {
        const auto& shown = show(1, contentOf("claudeCode|S1", kind));
        EXPECT_EQ(shown.urgency, 1);
        EXPECT_EQ(shown.expires, -1);
    }
    EXPECT_EQ(show(1, contentOf("", NotificationKind::reminder)).urgency, 1)
        << "what tells of several sessions is never taken back";
}

TEST_F(OnTheDesktop, findsOutBeforeItShowsTheFirst) {
    channel->prepare();
    EXPECT_TRUE(channel->state().isUsable);
    show(1, contentOf("claudeCode|S1"));
}

TEST_F(OnTheDesktop, replacesWhatItHasShownOfASession) {
    untilKnown();
    // The second comes before the id of the first is known.
    begin(1, contentOf("claudeCode|S1"));
    begin(2, contentOf("claudeCode|S1"));
    begin(3, contentOf("claudeCode|S2"));
    untilEvents(3);
    ASSERT_EQ(service->shown.size(), 3U);
    EXPECT_EQ(service->shown[0].replaces, 0U);
    EXPECT_EQ(service->shown[1].replaces, service->shown[0].id);
    EXPECT_EQ(service->shown[2].replaces, 0U);
}

TEST_F(OnTheDesktop, takesBackWhatItHasShownOfASession) {
    untilKnown();
    const auto id = show(1, contentOf("claudeCode|S1")).id;
    show(2, contentOf("claudeCode|S2"));
    channel->withdraw("claudeCode|S1");
    channel->withdraw("claudeCode|none");
    until([&] { return !service->closed.empty(); });
    letGoOnForAWhile();
    EXPECT_EQ(service->closed, std::vector{id});
    EXPECT_EQ(show(3, contentOf("claudeCode|S1")).replaces, 0U);
}

TEST_F(OnTheDesktop, takesBackAlsoWhatIsBeingShown) {
    untilKnown();
    begin(1, contentOf("claudeCode|S1"));
    channel->withdraw("claudeCode|S1");
    until([&] { return !service->closed.empty(); });
    EXPECT_EQ(service->closed, std::vector{service->shown.front().id});
}

TEST_F(OnTheDesktop, takesBackAllThatItShowsWhenItEnds) {
    untilKnown();
    const auto id = show(1, contentOf("claudeCode|S1")).id;
    attachment = {};
    channel.reset();
    waitUntil([&] {
        service->act();
        return !service->closed.empty();
    });
    EXPECT_EQ(service->closed, std::vector{id});
}

TEST_F(OnTheDesktop, tellsOfAClickOnWhatWasShownLast) {
    untilKnown();
    show(1, contentOf("claudeCode|S1"));
    const auto id = show(2, contentOf("claudeCode|S1")).id;
    service->emitClick(id + 1);
    service->emitClick(id);
    service->emitClosed(id);
    service->emitClick(id);
    untilEvents(2);
    letGoOnForAWhile();
    EXPECT_EQ(events, (Events{{Kind::clicked, 2}, {Kind::closed, 2}}));
    events.clear();
    EXPECT_EQ(show(3, contentOf("claudeCode|S1")).replaces, 0U) << "it was closed";
}

TEST_F(OnTheDesktop, takesNoClickThatAnotherProgramForges) {
    untilKnown();
    const auto id = show(1, contentOf("claudeCode|S1")).id;
    sd_bus* forger = nullptr;
    ASSERT_GE(sd_bus_open_user(&forger), 0);
    FakeService::emitClick(forger, nullptr, id);
    // Sent to the channel by its own name, it passes by every filter of the bus.
    FakeService::emitClick(forger, service->client().c_str(), id);
    ASSERT_GE(sd_bus_flush(forger), 0);
    letGoOnForAWhile();
    EXPECT_EQ(events, Events{});
    service->emitClick(id);
    untilEvents(1);
    sd_bus_flush_close_unref(forger);
}

TEST_F(OnTheDesktop, offersNoClickWhereTheServiceTakesNone) {
    service->capabilities = {"body"};
    untilKnown();
    EXPECT_FALSE(channel->state().clicks);
    EXPECT_EQ(reason(), "fake 2.0 on the session bus, which takes no clicks");
    EXPECT_TRUE(show(1, contentOf("claudeCode|S1")).actions.empty());
}

TEST_F(OnTheDesktop, escapesMarkupWhereTheServiceReadsItAlone) {
    auto content = contentOf("claudeCode|S1");
    content.title = content.body = "<b>R&D</b>";
    untilKnown();
    EXPECT_EQ(show(1, content).body, "<b>R&D</b>");
    service.reset();
    service.emplace().capabilities = {"body", "body-markup"};
    until([&] { return service->questions > 0 && !channel->state().isFindingOut; });
    const auto& shown = show(2, content);
    EXPECT_EQ(shown.body, "&lt;b&gt;R&amp;D&lt;/b&gt;");
    EXPECT_EQ(shown.title, "<b>R&D</b>") << "a title never holds markup";
}

TEST_F(OnTheDesktop, putsTheTextIntoTheTitleWhereThereIsNoOtherPlace) {
    service->capabilities = {};
    untilKnown();
    const auto& shown = show(1, contentOf("claudeCode|S1"));
    EXPECT_EQ(shown.title, "Claude Code needs permission: proj — waiting for approval.");
    EXPECT_EQ(shown.body, "");
}

TEST_F(OnTheDesktop, sendsTextsThatEveryServiceBears) {
    untilKnown();
    auto content = contentOf("claudeCode|S1");
    content.title = "a\x1B]0;x\x07 \xFF 👩‍👩‍👧‍👦";
    content.body = repeated("👩‍👩‍👧‍👦", 400);
    EXPECT_EQ(show(1, content).title, "a]0;x  👩‍👩‍👧‍👦");
    EXPECT_EQ(service->shown.back().body, content.body);
    content.body = repeated("x", 10'000);
    EXPECT_EQ(show(2, content).body, repeated("x", 499) + "…");
}

TEST_F(OnTheDesktop, playsASoundWhereTheServiceCanAndTheUserWantsIt) {
    service->capabilities = {"body", "sound"};
    untilKnown();
    auto content = contentOf("claudeCode|S1");
    EXPECT_EQ(show(1, content).hints.count("sound-name"), 1U);
    content.playSound = false;
    EXPECT_EQ(show(2, content).hints.count("suppress-sound"), 1U);
}

// --- Faults ---

TEST_F(OnTheDesktop, isNotUsableWithoutAService) {
    service.reset();
    untilKnown();
    EXPECT_FALSE(channel->state().isUsable);
    EXPECT_EQ(reason(), "no notification service on the session bus");
    begin(1, contentOf("claudeCode|S1"));
    untilEvents(1);
    EXPECT_EQ(events, (Events{{Kind::failed, 1}}));

    service.emplace();
    until([this] { return channel->state().isUsable && !channel->state().isFindingOut; });
    events.clear();
    show(2, contentOf("claudeCode|S1"));
}

TEST_F(OnTheDesktop, isNotUsableWithoutABus) {
    attachment = {};
    for (const auto& [address, why] :
         {std::pair{std::optional<std::string>{},
                    "no session bus: DBUS_SESSION_BUS_ADDRESS is not set"},
          std::pair{std::optional<std::string>{"unix:path=/no/such/bus"},
                    "the session bus cannot be reached: No such file or directory"}}) {
        const EnvironmentVariable variable{"DBUS_SESSION_BUS_ADDRESS", address};
        const EnvironmentVariable directory{"XDG_RUNTIME_DIR", "/no/such/directory"};
        channel = makeDesktopChannel();
        channel->prepare();
        EXPECT_FALSE(channel->state().isUsable);
        EXPECT_EQ(reason(), why);
        begin(1, contentOf("claudeCode|S1"));
        EXPECT_EQ(channel->takeEvents(), (Events{{Kind::failed, 1}}));
        const auto interest = channel->source->interest();
        EXPECT_LT(interest.descriptor, 0);
        EXPECT_FALSE(interest.deadline) << "nothing is looked at again by itself";
    }
}

TEST_F(OnTheDesktop, givesUpAServiceThatDoesNotAnswer) {
    service->answersToQuestions = Answers::later;
    channel->prepare();
    begin(1, contentOf("claudeCode|S1"));
    untilEvents(1);
    EXPECT_EQ(events, (Events{{Kind::failed, 1}}));
    EXPECT_FALSE(channel->state().isUsable);
    EXPECT_EQ(reason(), "the notification service does not answer");

    service->answerNow();
    until([this] { return channel->state().isUsable; });
}

TEST_F(OnTheDesktop, replacesWhatWasAnsweredTooLate) {
    untilKnown();
    service->answers = Answers::later;
    begin(1, contentOf("claudeCode|S1"));
    begin(2, contentOf("claudeCode|S2"));
    untilEvents(2);
    EXPECT_EQ(events, (Events{{Kind::failed, 1}, {Kind::failed, 2}}));
    EXPECT_FALSE(channel->state().isUsable);
    EXPECT_EQ(service->shown.size(), 1U) << "a service that does not answer is sent no more";

    service->answerNow();
    until([this] { return channel->state().isUsable; });
    events.clear();
    EXPECT_EQ(show(1, contentOf("claudeCode|S1")).replaces, service->shown.front().id);
    EXPECT_EQ(show(2, contentOf("claudeCode|S2")).replaces, 0U);
}

TEST_F(OnTheDesktop, isNotUsableForAWhileAfterAnError) {
    untilKnown();
    service->answers = Answers::withAnError;
    begin(1, contentOf("claudeCode|S1"));
    untilEvents(1);
    EXPECT_EQ(events, (Events{{Kind::failed, 1}}));
    EXPECT_FALSE(channel->state().isUsable);
    EXPECT_EQ(reason(), "the notification service failed: org.example.Trouble");
    EXPECT_TRUE(channel->source->interest().deadline) << "it is asked again by itself";
}

TEST_F(OnTheDesktop, forgetsTheIdsOfAServiceThatHasEnded) {
    untilKnown();
    const auto id = show(1, contentOf("claudeCode|S1")).id;
    service.reset();
    until([this] { return !channel->state().isUsable; });
    EXPECT_EQ(reason(), "the notification service has ended");

    service.emplace();
    until([this] { return channel->state().isUsable && !channel->state().isFindingOut; });
    service->emitClick(id);
    letGoOnForAWhile();
    EXPECT_EQ(events, Events{});
    EXPECT_EQ(show(2, contentOf("claudeCode|S1")).replaces, 0U);
}

TEST_F(OnTheDesktop, bearsAServiceThatEndsWithoutAnAnswer) {
    untilKnown();
    service->answers = Answers::later;
    begin(1, contentOf("claudeCode|S1"));
    begin(2, contentOf("claudeCode|S2"));
    until([this] { return !service->shown.empty(); });
    service.reset();
    untilEvents(2);
    EXPECT_EQ(events, (Events{{Kind::failed, 1}, {Kind::failed, 2}}));

    service.emplace();
    until([this] { return channel->state().isUsable && !channel->state().isFindingOut; });
    events.clear();
    show(1, contentOf("claudeCode|S1"));
}

TEST_F(OnTheDesktop, bearsABusThatEnds) {
    untilKnown();
    show(1, contentOf("claudeCode|S1"));
    service->answers = Answers::later;
    begin(2, contentOf("claudeCode|S1"));
    until([this] { return service->shown.size() == 2; });
    service.reset();
    bus.end();
    untilEvents(1);
    until([this] { return channel->source->interest().descriptor < 0; });
    EXPECT_EQ(events, (Events{{Kind::failed, 2}}));
    EXPECT_FALSE(channel->state().isUsable);
    begin(3, contentOf("claudeCode|S1"));
    untilEvents(2);
    EXPECT_EQ(events.back(), (ChannelEvent{Kind::failed, 3}));
}

TEST_F(OnTheDesktop, givesUpABusThatDoesNotAnswer) {
    service.reset();
    bus.stop();
    channel->prepare();
    begin(1, contentOf("claudeCode|S1"));
    untilEvents(1);
    EXPECT_EQ(events, (Events{{Kind::failed, 1}}));
    EXPECT_FALSE(channel->state().isUsable);
    EXPECT_EQ(reason(), "the notification service does not answer");
}

}  // namespace
}  // namespace tallowbrook::host
