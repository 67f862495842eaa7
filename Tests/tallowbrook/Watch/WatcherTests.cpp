#include "Watch/Watcher.h"

#include <gtest/gtest.h>

#include "DatabaseAtHome.h"
#include "FakeChannel.h"
#include "Store/PresenceStore.h"
#include "Support/SampleSnapshots.h"

namespace tallowbrook::host {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;

using Texts = std::vector<std::string>;

AgentEvent eventOf(const std::string& session, EventCategory category, Instant at) {
    static std::uint8_t number = 0;
    AgentEvent event = numberedEvent(++number);
    event.sessionID = session;
    event.eventType = std::string{rawValue(category)};
    event.category = category;
    event.observedAt = at;
    if (category == EventCategory::attentionRequested) event.attention = AttentionKind::permission;
    return event;
}

// A watcher whose events, clock and channel are the test's.
struct Watching : testing::Test {
    DatabaseAtHome home;
    Database database = home.open();
    Instant now = sampleTime;
    std::vector<AgentEvent> waiting;  // to be claimed with the next pass
    std::expected<void, Sentence> source;
    FakeChannel fake;
    std::vector<Channel> channels{fake.channel()};
    std::optional<Instant> waitsSince;  // the agent of any session
    std::optional<AgentPresence> judged;
    Texts said;
    Texts clicked;  // sessions
    Troubles troubles{[this](const std::string& sentence) { said.push_back(sentence); },
                      home.paths.databaseFile()};

    EventSource events() {
        return {[this]() -> EventClaim {
            if (!source) return {.batches = {}, .troubles = {source.error()}};
            if (waiting.empty()) return {};
            return {.batches = {EventBatch{
                        .name = "batch",
                        .forEachEvent = [this](const SpoolDrainer::EventSink& take)
                            -> std::expected<std::int64_t, FileError> {
                            for (auto event : waiting) take(std::move(event), "{}");
                            return 0;
                        },
                        .remove = [this] { waiting.clear(); },
                    }},
                    .troubles = {}};
        }};
    }

    Watcher makeWatcher() {
        return Watcher{
            database,
            {events()},
            channels,
            troubles,
            {.now = [this] { return now; },
             .calendar = [] { return Calendar::fixed(minutes{0}); },
             .news = [] { return std::nullopt; },
             .hasWaitedSince = [this](const SessionKey&,
                                      Instant since) { return waitsSince && *waitsSince <= since; },
             .followAgents =
                 [this](Instant, const PresenceNews& news) {
                     tellNews(news);
                     return PresenceOutlook{};
                 },
             .clicked = [this](const std::string& session) { clicked.push_back(session); }}};
    }

    void tellNews(const PresenceNews& news) {
        const SessionKey key{Provider::claudeCode, "S1"};
        if (!judged || PresenceStore{database}.presence(key) == judged) return;
        PresenceStore{database}.set(key, *judged);
        news(*SessionStore{database}.session(key)->snapshot, *judged);
    }

    // What is known of the agent of S1 from the next pass on.
    void findAgent(AgentState state) {
        judged = AgentPresence{.state = state,
                               .evidence = AgentEvidence::record,
                               .since = now,
                               .judgedAt = now,
                               .process = std::nullopt,
                               .lockWasHeld = false};
    }

    void storeWaiting(const std::string& id, Instant since) {
        auto session = minimalSnapshot();
        session.key.sessionID = id;
        session.status = SessionStatus::needsAttention;
        session.attention = AttentionKind::permission;
        session.statusSince = session.lastSeenAt = since;
        SessionStore{database}.addSession(session);
    }

    void pause() {
        Preferences preferences;
        preferences.notifications.paused = true;
        Settings{database}.setPreferences(preferences);
    }

    // Since three o'clock; it is 3:30:55.
    void beQuietUntilFive() {
        Preferences preferences;
        preferences.notifications.quietHours = QuietHours{true, 3 * 60, 5 * 60};
        Settings{database}.setPreferences(preferences);
    }

    // What was told at last.
    std::string lastBody() const {
        return home.text("SELECT title || ': ' || body FROM notifications ORDER BY number DESC");
    }
};

TEST_F(Watching, storesAndTellsInOnePass) {
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    EXPECT_TRUE(watcher.pass());
    EXPECT_EQ(fake.takeHeard(), Texts{"Claude Code needs permission"});
    EXPECT_TRUE(waiting.empty());
    EXPECT_TRUE(watcher.pass());
    EXPECT_TRUE(fake.takeHeard().empty());
}

TEST_F(Watching, wakesForAReminderByItsOwnTime) {
    auto watcher = makeWatcher();
    EXPECT_TRUE(watcher.pass());
    EXPECT_EQ(watcher.nextDue(), std::nullopt) << "nothing waits";

    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    watcher.pass();
    EXPECT_EQ(watcher.nextDue(), sampleTime + minutes{10});
    fake.takeHeard();
    now = *watcher.nextDue();
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), Texts{"Claude Code is still waiting for permission"});
    EXPECT_EQ(watcher.nextDue(), sampleTime + minutes{20});
}

TEST_F(Watching, remindsOfNoSessionWhoseAgentIsIdleOrGone) {
    for (const auto state : {AgentState::idle, AgentState::gone}) {
        auto watcher = makeWatcher();
        waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
        watcher.pass();
        EXPECT_EQ(fake.takeHeard(), Texts{"Claude Code needs permission"});
        findAgent(state);
        watcher.pass();
        EXPECT_EQ(watcher.nextDue(), std::nullopt);
        now += minutes{10};
        watcher.pass();
        EXPECT_EQ(fake.takeHeard(), Texts{});
        judged.reset();
        now += minutes{1};
        waiting = {eventOf("S1", EventCategory::turnCompleted, now)};
        watcher.pass();
        fake.takeHeard();
        now += minutes{1};
    }
}

TEST_F(Watching, tellsNothingOfAWaitThatIsOver) {
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    findAgent(AgentState::idle);
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), Texts{});
    judged.reset();
    now += minutes{1};
    waiting = {eventOf("S1", EventCategory::promptSubmitted, now),
               eventOf("S1", EventCategory::attentionRequested, now + seconds{1})};
    now += seconds{2};
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), Texts{"Claude Code needs permission"}) << "it waits again";
}

TEST_F(Watching, takesBackWhatItToldOfASessionThatWaitsNoMore) {
    auto watcher = makeWatcher();
    fake.state->withdraws = true;
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    watcher.pass();
    EXPECT_EQ(fake.state->withdrawn, Texts{});
    findAgent(AgentState::idle);
    watcher.pass();
    watcher.pass();
    EXPECT_EQ(fake.state->withdrawn, Texts{"claudeCode|S1"});
}

TEST_F(Watching, takesBackWhatItToldOfASessionThatWasAnswered) {
    auto watcher = makeWatcher();
    fake.state->withdraws = true;
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    watcher.pass();
    now += seconds{1};
    waiting = {eventOf("S1", EventCategory::activity, now)};
    watcher.pass();
    EXPECT_EQ(fake.state->withdrawn, Texts{"claudeCode|S1"});
}

TEST_F(Watching, tellsOnceOfATurnThatFailedWithoutAnEvent) {
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::promptSubmitted, now)};
    watcher.pass();
    findAgent(AgentState::failed);
    watcher.pass();
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), Texts{"Claude Code turn failed"});
}

TEST_F(Watching, tellsOfNoFailureThatTheUserDoesNotWantToHearOf) {
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::promptSubmitted, now)};
    watcher.pass();
    auto preferences = Settings{database}.preferences();
    preferences.notifications.notifyOnFailure = false;
    Settings{database}.setPreferences(preferences);
    findAgent(AgentState::failed);
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), Texts{});
}

TEST_F(Watching, tellsOfADialogOnceThoughAnActivityCameBeforeItWasNoted) {
    auto watcher = makeWatcher();
    const auto asked = now;
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    watcher.pass();
    now += std::chrono::milliseconds{50};
    waiting = {eventOf("S1", EventCategory::activity, now)};
    watcher.pass();
    waitsSince = asked + std::chrono::milliseconds{80};
    now += seconds{6};
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), Texts{"Claude Code needs permission"});

    waitsSince.reset();
    now += seconds{1};
    waiting = {eventOf("S1", EventCategory::activity, now)};
    watcher.pass();
    now += seconds{20};
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), Texts{"Claude Code needs permission"}) << "another dialog";
}

TEST_F(Watching, tellsOfADialogOnceWhileAnotherAgentWorksBesideIt) {
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    watcher.pass();
    waitsSince = now;
    for (int i = 1; i <= 3; ++i) {
        now += seconds{3};
        waiting = {eventOf("S1", EventCategory::activity, now),
                   eventOf("S1", EventCategory::attentionRequested, now)};
        watcher.pass();
    }
    EXPECT_EQ(fake.takeHeard(), Texts{"Claude Code needs permission"});

    waitsSince.reset();
    now += seconds{3};
    waiting = {eventOf("S1", EventCategory::activity, now)};
    watcher.pass();
    EXPECT_EQ(home.text("SELECT status FROM sessions"), "working") << "it was answered";
}

TEST_F(Watching, wakesAtTheEndOfAPauseAndTellsFromThereOn) {
    Preferences paused;
    paused.notifications.paused = true;
    paused.host.pausedUntil = now + minutes{30};
    Settings{database}.setPreferences(paused);
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    watcher.pass();
    EXPECT_TRUE(fake.takeHeard().empty());
    ASSERT_EQ(watcher.nextDue(), now + minutes{30});
    now = *watcher.nextDue();
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), Texts{"Claude Code is still waiting for permission"});
    waiting = {eventOf("S2", EventCategory::turnCompleted, now)};
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), Texts{"Claude Code finished"});
}

TEST_F(Watching, remindsAnIntervalAfterTheClockWasSetBack) {
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    watcher.pass();
    now += minutes{10};
    watcher.pass();
    fake.takeHeard();

    now -= std::chrono::days{30};
    watcher.pass();
    EXPECT_TRUE(fake.takeHeard().empty());
    EXPECT_EQ(watcher.nextDue(), now + minutes{10});
    now += minutes{10};
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), Texts{"Claude Code is still waiting for permission"});
}

TEST_F(Watching, tellsWhatPiledUpWhileNoHostRanInOneLine) {
    for (const char* id : {"W1", "W2", "W3"}) storeWaiting(id, now - minutes{60});
    waiting = {eventOf("S1", EventCategory::turnCompleted, now - minutes{30}),
               eventOf("S2", EventCategory::turnCompleted, now - minutes{20}),
               eventOf("S3", EventCategory::turnFailed, now - minutes{20}),
               eventOf("S4", EventCategory::attentionRequested, now - seconds{1})};
    auto watcher = makeWatcher();
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), (Texts{"Claude Code needs permission", "While you were away"}));
    EXPECT_EQ(lastBody(), "While you were away: 3 wait, 2 finished, 1 failed.");

    // Each counts as reminded of: the next reminder comes an interval later.
    watcher.pass();
    EXPECT_TRUE(fake.takeHeard().empty());
    now += minutes{11};
    watcher.pass();
    EXPECT_EQ(fake.takeHeard().size(), 4U);
}

TEST_F(Watching, tellsOfOneSessionThatWaitedByItsReminder) {
    storeWaiting("W1", now - minutes{60});
    auto watcher = makeWatcher();
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), Texts{"Claude Code is still waiting for permission"});
}

TEST_F(Watching, saysNothingOfSessionsThatNoListShows) {
    storeWaiting("W1", now - std::chrono::hours{24 * 200});
    storeWaiting("W2", now - std::chrono::hours{25});
    auto watcher = makeWatcher();
    watcher.pass();
    EXPECT_TRUE(fake.takeHeard().empty());
    EXPECT_EQ(watcher.nextDue(), std::nullopt);
}

TEST_F(Watching, saysNothingOfAnAbsenceWhenItTakesOverOrTheUserWantsNone) {
    for (const char* id : {"W1", "W2"}) storeWaiting(id, now - minutes{60});
    Preferences preferences;
    preferences.notifications.paused = true;
    Settings{database}.setPreferences(preferences);
    auto paused = makeWatcher();
    paused.pass();
    EXPECT_TRUE(fake.takeHeard().empty());

    Settings{database}.setPreferences({});
    auto successor = makeWatcher();
    successor.takeOver();
    successor.pass();
    EXPECT_EQ(fake.takeHeard(), (Texts(2, "Claude Code is still waiting for permission")));
}

TEST_F(Watching, tellsInOneLineWhatAPauseHeldBackWhenItEnds) {
    pause();
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::turnCompleted, now),
               eventOf("S2", EventCategory::turnFailed, now),
               eventOf("S3", EventCategory::attentionRequested, now),
               eventOf("S4", EventCategory::attentionRequested, now)};
    watcher.pass();
    now += minutes{30};
    waiting = {eventOf("S4", EventCategory::activity, now)};
    watcher.pass();
    EXPECT_TRUE(fake.takeHeard().empty());

    Settings{database}.setPreferences({});
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), Texts{"While you were away"});
    EXPECT_EQ(lastBody(), "While you were away: 1 waits, 1 finished, 1 failed.");
    watcher.pass();
    EXPECT_TRUE(fake.takeHeard().empty()) << "it is told once, and no reminder beside it";
}

TEST_F(Watching, wakesWhenTheQuietHoursEndAndTellsWhatTheyHeldBack) {
    beQuietUntilFive();
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::turnCompleted, now),
               eventOf("S2", EventCategory::turnCompleted, now)};
    watcher.pass();
    EXPECT_EQ(watcher.nextDue(), std::chrono::floor<minutes>(sampleTime) + minutes{90});
    now = watcher.nextDue().value();
    watcher.pass();
    EXPECT_EQ(lastBody(), "While you were away: 2 finished.");
    EXPECT_EQ(watcher.nextDue(), std::nullopt);
}

TEST_F(Watching, tellsWhatAPauseHeldBackAlsoByALaterHost) {
    pause();
    waiting = {eventOf("S1", EventCategory::turnCompleted, now)};
    makeWatcher().pass();
    Settings{database}.setPreferences({});
    now += minutes{60};
    makeWatcher().pass();
    EXPECT_EQ(lastBody(), "While you were away: 1 finished.");
}

TEST_F(Watching, keepsWhatAnAbsencePiledUpUntilTheQuietHoursEnd) {
    beQuietUntilFive();
    waiting = {eventOf("S1", EventCategory::turnCompleted, now - minutes{60})};
    auto watcher = makeWatcher();
    watcher.pass();
    EXPECT_TRUE(fake.takeHeard().empty());
    now = watcher.nextDue().value();
    watcher.pass();
    EXPECT_EQ(lastBody(), "While you were away: 1 finished.");
}

TEST_F(Watching, remindsInTheSameLineOfWhatWaitedLongerThanAPause) {
    pause();
    for (const char* id : {"W1", "W2"}) storeWaiting(id, now - minutes{60});
    auto watcher = makeWatcher();
    watcher.pass();
    Settings{database}.setPreferences({});
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), Texts{"While you were away"});
    EXPECT_EQ(lastBody(), "While you were away: 2 wait.");
}

TEST_F(Watching, forgetsWhatAPauseHeldBackOfAUserWhoWantsNothingAtAll) {
    pause();
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::turnCompleted, now)};
    watcher.pass();
    Preferences preferences;
    preferences.notifications.enabled = false;
    Settings{database}.setPreferences(preferences);
    watcher.pass();
    Settings{database}.setPreferences({});
    watcher.pass();
    EXPECT_TRUE(fake.takeHeard().empty());
}

TEST_F(Watching, tellsNothingThatTheSessionHasLeftBehind) {
    auto watcher = makeWatcher();
    now += seconds{5};
    waiting = {eventOf("S1", EventCategory::attentionRequested, now - seconds{4}),
               eventOf("S1", EventCategory::activity, now - seconds{2}),
               eventOf("S1", EventCategory::turnCompleted, now)};
    watcher.pass();
    EXPECT_EQ(fake.takeHeard(), Texts{"Claude Code finished"});

    // While its channel cannot tell.
    fake.state->answers = {FakeChannel::Answer::fails};
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    watcher.pass();
    now += minutes{1};
    waiting = {eventOf("S1", EventCategory::activity, now)};
    watcher.pass();
    EXPECT_TRUE(fake.takeHeard().empty());
    EXPECT_EQ(home.text("SELECT group_concat(reason) FROM untold"), "folded,folded");
}

TEST_F(Watching, countsWhatNoChannelCouldTellInTimeAsMissed) {
    fake.state->answers = {FakeChannel::Answer::fails};
    waiting = {eventOf("S1", EventCategory::turnCompleted, now)};
    makeWatcher().pass();
    now += minutes{30};
    makeWatcher().pass();
    EXPECT_EQ(lastBody(), "While you were away: 1 finished.");
}

TEST_F(Watching, saysATroubleOnceForAsLongAsItLasts) {
    auto watcher = makeWatcher();
    source = std::unexpected(Sentence{"The spool could not be claimed"});
    EXPECT_FALSE(watcher.pass());
    EXPECT_EQ(watcher.nextDue(), now + seconds{2}) << "it is tried again";
    EXPECT_FALSE(watcher.pass());
    EXPECT_EQ(said, Texts{"The spool could not be claimed."});
    source = {};
    EXPECT_TRUE(watcher.pass());
    source = std::unexpected(Sentence{"The spool could not be claimed"});
    EXPECT_FALSE(watcher.pass());
    EXPECT_EQ(said.size(), 2U);
}

TEST_F(Watching, keepsWhatTheDatabaseRefusesForTheNextPass) {
    auto watcher = makeWatcher();
    home.execute(
        "CREATE TRIGGER refuse BEFORE INSERT ON events BEGIN SELECT RAISE(ABORT, 'refused'); END");
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    EXPECT_FALSE(watcher.pass());
    EXPECT_EQ(said, Texts{"The database failed: refused. The spool is kept."});
    EXPECT_EQ(waiting.size(), 1U);

    home.execute("DROP TRIGGER refuse");
    EXPECT_TRUE(watcher.pass());
    EXPECT_EQ(fake.takeHeard().size(), 1U);
}

TEST_F(Watching, tellsByEveryChannelThatIsUsable) {
    const FakeChannel other;
    const FakeChannel broken;
    broken.state->isUsable = false;
    channels = {fake.channel(), other.channel("desktop"), broken.channel("broken")};
    fake.state->answers = {FakeChannel::Answer::fails};
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    auto watcher = makeWatcher();
    EXPECT_FALSE(watcher.pass());
    EXPECT_EQ(other.takeHeard().size(), 1U) << "a channel that fails stops no other";
    EXPECT_EQ(home.text("SELECT group_concat(channel || ' ' || state) FROM deliveries"),
              "desktop told,lines pending");
    now = *watcher.nextDue();
    EXPECT_TRUE(watcher.pass());
    EXPECT_EQ(fake.takeHeard().size(), 1U);
    EXPECT_TRUE(other.takeHeard().empty());
}

// A watcher with a ladder of two rungs beside its lines.
struct WatchingALadder : Watching {
    FakeChannel desktop;
    FakeChannel terminal;

    WatchingALadder() {
        desktop.state->isRung = terminal.state->isRung = true;
        channels = {fake.channel(), desktop.channel("desktop"), terminal.channel("terminal")};
    }

    std::string deliveries() const {
        return home.text("SELECT group_concat(channel || ' ' || state) FROM deliveries");
    }
};

TEST_F(WatchingALadder, tellsByTheFirstRungAlone) {
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    EXPECT_TRUE(watcher.pass());
    EXPECT_EQ(deliveries(), "desktop told,lines told");
}

TEST_F(WatchingALadder, letsTheNextRungStandInForOneThatTurnsOutNotToBeUsable) {
    auto watcher = makeWatcher();
    desktop.state->answers = {FakeChannel::Answer::later};
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    EXPECT_TRUE(watcher.pass());
    EXPECT_EQ(deliveries(), "desktop begun,lines told");

    desktop.state->isUsable = false;
    desktop.state->events = {{ChannelEvent::Kind::failed, desktop.state->begun.front()}};
    EXPECT_FALSE(watcher.pass());
    EXPECT_EQ(said, Texts{"The channel \"desktop\" failed: as the test wants it. What is to be "
                          "told is kept for the next try."});
    EXPECT_EQ(watcher.nextDue(), now);
    EXPECT_TRUE(watcher.pass());
    EXPECT_EQ(deliveries(), "desktop refused,lines told,terminal told");
    EXPECT_EQ(terminal.takeHeard(), Texts{"Claude Code needs permission"});
}

TEST_F(WatchingALadder, keepsWhatNoRungCanTellUntilOneCan) {
    auto watcher = makeWatcher();
    terminal.state->isUsable = false;
    desktop.state->answers = {FakeChannel::Answer::fails};
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    EXPECT_FALSE(watcher.pass());
    desktop.state->isUsable = false;
    now = *watcher.nextDue();
    EXPECT_TRUE(watcher.pass());
    EXPECT_EQ(desktop.state->begun.size(), 1U) << "no attempt without a chance";
    EXPECT_EQ(deliveries(), "desktop pending,lines told");

    desktop.state->isUsable = true;
    EXPECT_TRUE(watcher.pass());
    EXPECT_EQ(deliveries(), "desktop told,lines told");
}

TEST_F(WatchingALadder, tellsWhichSessionWasClicked) {
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    watcher.pass();
    desktop.state->events = {{ChannelEvent::Kind::clicked, desktop.state->begun.front()},
                             {ChannelEvent::Kind::clicked, 999}};
    watcher.pass();
    EXPECT_EQ(clicked, Texts{"claudeCode|S1"});
}

TEST_F(WatchingALadder, takesBackWhatAskedForTheUserOnceTheSessionGoesOn) {
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::attentionRequested, now),
               eventOf("S2", EventCategory::attentionRequested, now)};
    watcher.pass();
    watcher.pass();
    EXPECT_EQ(desktop.state->withdrawn, Texts{}) << "both still wait";

    waiting = {eventOf("S1", EventCategory::activity, now + seconds{5})};
    now += seconds{5};
    watcher.pass();
    watcher.pass();
    EXPECT_EQ(desktop.state->withdrawn, Texts{"claudeCode|S1"});
    EXPECT_EQ(terminal.state->withdrawn, Texts{});
}

TEST_F(WatchingALadder, leavesWhatTookThePlaceOfARequest) {
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    watcher.pass();
    now += seconds{5};
    waiting = {eventOf("S1", EventCategory::turnCompleted, now)};
    watcher.pass();
    EXPECT_EQ(desktop.takeHeard(), (Texts{"Claude Code needs permission", "Claude Code finished"}));
    EXPECT_EQ(desktop.state->withdrawn, Texts{});
}

TEST_F(WatchingALadder, sparesTheUserARequestThatIsOverAlready) {
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::attentionRequested, now),
               eventOf("S1", EventCategory::activity, now + seconds{1})};
    now += seconds{1};
    watcher.pass();
    EXPECT_EQ(desktop.takeHeard(), Texts{});
    EXPECT_EQ(fake.takeHeard(), Texts{});
    EXPECT_EQ(deliveries(), "desktop folded,lines folded");
}

TEST_F(WatchingALadder, saysWhatNoChannelCouldTellInTime) {
    auto watcher = makeWatcher();
    watcher.pass();
    fake.state->isUsable = terminal.state->isUsable = false;
    desktop.state->answers = {FakeChannel::Answer::later};
    waiting = {eventOf("S1", EventCategory::turnCompleted, now)};
    watcher.pass();
    now += minutes{30};
    watcher.pass();
    EXPECT_EQ(said, Texts{"One notification could be told by no channel until too old."});
}

TEST_F(WatchingALadder, asksNothingOfAChannelThatTheUserHasRuledOut) {
    Settings{database}.setPreferences(
        {.notifications = defaultPreferences(), .host = {.channels = {{"terminal"}}}});
    auto watcher = makeWatcher();
    waiting = {eventOf("S1", EventCategory::attentionRequested, now)};
    watcher.pass();
    EXPECT_EQ(desktop.state->prepared, 0);
    EXPECT_EQ(deliveries(), "lines told,terminal told");
}

}  // namespace
}  // namespace tallowbrook::host
