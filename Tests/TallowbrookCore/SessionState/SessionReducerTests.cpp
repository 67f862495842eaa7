#include "SessionState/SessionReducer.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "Support/SampleSnapshots.h"

namespace tallowbrook {
namespace {

const SessionReducer reducer{.duplicateWindow = Seconds{2}};

// An event of the full snapshot's session that differs from it in every value.
AgentEvent eventOf(EventCategory category, Instant observedAt = after(100)) {
    AgentEvent event = fullEvent();
    event.origin = EventOrigin::live;
    event.channel = EventChannel::hook;
    event.eventType = "Event";
    event.category = category;
    event.attention.reset();
    event.turnID = "turn:2";
    event.observedAt = observedAt;
    event.cwd = "/Users/x/other";
    event.tty = "ttys009";
    event.detail = {"prompt", "Edit", "resume", "exit", "rate_limit"};
    return event;
}

// The full snapshot in `status`, with a permission request pending where it needs attention.
SessionSnapshot storedIn(SessionStatus status, bool ended = false) {
    SessionSnapshot session = fullSnapshot();
    session.status = status;
    session.attention.reset();
    if (status == SessionStatus::needsAttention) session.attention = AttentionKind::permission;
    session.sessionEnded = ended;
    return session;
}

std::string signatureOf(const AgentEvent& event) {
    const std::string attention{event.attention ? rawValue(*event.attention) : ""};
    return "hook|Event|" + std::string{rawValue(event.category)} + "|" + attention +
           "|turn:2|prompt|Edit|resume|exit|rate_limit";
}

// What becomes of `stored` by a newer event of `eventOf`, whatever the event means.
SessionSnapshot touchedAndSigned(SessionSnapshot stored, const AgentEvent& event) {
    stored.eventCount += 1;
    stored.lastSeenAt = event.observedAt;
    stored.tty = "ttys009";
    stored.origin = EventOrigin::live;
    stored.lastSignature = signatureOf(event);
    stored.lastSignatureAt = event.observedAt;
    return stored;
}

// What becomes of it where the event reaches the status machine.
SessionSnapshot reached(const SessionSnapshot& stored, const AgentEvent& event) {
    SessionSnapshot session = touchedAndSigned(stored, event);
    session.lastEventType = "Event";
    session.cwd = "/Users/x/other";
    return session;
}

SessionSnapshot withStatusOf(SessionSnapshot session, SessionStatus status,
                             const AgentEvent& event) {
    session.status = status;
    session.attention.reset();
    session.statusEventType = "Event";
    session.statusCategory = event.category;
    session.statusDetail = event.detail;
    session.statusSince = event.observedAt;
    return session;
}

TEST(ReductionResult, hasAChangedStatusWhenStatusOrAttentionDiffers) {
    const auto changed = [](const std::optional<SessionSnapshot>& previous,
                            const std::optional<SessionSnapshot>& current) {
        return ReductionResult{EventEffect::applied, previous, current}.statusChanged();
    };
    const auto waiting = storedIn(SessionStatus::needsAttention);
    auto neither = waiting;
    neither.attention.reset();
    EXPECT_FALSE(changed(std::nullopt, std::nullopt));
    EXPECT_FALSE(changed(waiting, std::nullopt));
    EXPECT_TRUE(changed(std::nullopt, waiting));
    EXPECT_TRUE(changed(waiting, storedIn(SessionStatus::failed)));
    EXPECT_TRUE(changed(waiting, neither));
    EXPECT_TRUE(changed(neither, waiting));
    EXPECT_FALSE(changed(waiting, storedIn(SessionStatus::needsAttention, true)))
        << "the ended flag is no status";
}

// One rule of the status machine, for sessions of every status that are ended or not.
struct Rule {
    EventCategory category;
    bool ended;
    // What becomes of each stored status, in their order: working, needsAttention (permission),
    // completed, failed, interrupted, stale, unknown. "=" it stays, "!" the event is refused, else
    // the first letter of the status that is set.
    std::string_view outcomes;
    bool endedAfter;
    std::function<void(SessionSnapshot&)> change = [](SessionSnapshot&) {};
};

SessionStatus statusOf(char letter) {
    for (const SessionStatus status : allCases<SessionStatus>())
        if (rawValue(status).front() == letter) return status;
    return SessionStatus::unknown;
}

ReductionResult expectedResult(const Rule& rule, const SessionSnapshot& stored,
                               const AgentEvent& event) {
    const char outcome = rule.outcomes[static_cast<std::size_t>(stored.status)];
    SessionSnapshot session = reached(stored, event);
    if (outcome == '!') return {EventEffect::ignored, stored, session};
    if (outcome != '=') session = withStatusOf(session, statusOf(outcome), event);
    if (session.status == SessionStatus::needsAttention && outcome != '=')
        session.attention = event.attention;
    session.sessionEnded = rule.endedAfter;
    session.lastAppliedAt = event.observedAt;
    rule.change(session);
    const bool same = outcome == '=' && rule.ended == rule.endedAfter;
    return {same ? EventEffect::confirmed : EventEffect::applied, stored, session};
}

std::vector<Rule> rules() {
    const auto prompted = [](SessionSnapshot& session) { session.promptCount = 8; };
    const auto completed = [](SessionSnapshot& session) { session.lastCompletedTurnID = "turn:2"; };
    const auto ended = [](SessionSnapshot& session) {
        session.endedAt = after(100);
        session.endReason = "exit";
    };
    const auto restarted = [](SessionSnapshot& session) {
        session.endedAt.reset();
        session.endReason.reset();
    };
    using enum EventCategory;
    return {
        {sessionStarted, false, "=======", false},
        {sessionStarted, true, "uuuuuu=", false, restarted},
        {promptSubmitted, false, "=wwwwww", false, prompted},
        {promptSubmitted, true, "=wwwwww", false, prompted},
        {attentionRequested, false, "n=nnnnn", false},
        {attentionRequested, true, "!!!!!!!", true},
        {activity, false, "=w!!!=w", false},
        {activity, true, "!!!!!!!", true},
        {turnCompleted, false, "cc=cccc", false, completed},
        {turnCompleted, true, "cc=cccc", true, completed},
        {turnFailed, false, "fff=fff", false},
        {turnFailed, true, "fff=fff", true},
        {turnInterrupted, false, "iiii=ii", false},
        {turnInterrupted, true, "iiii=ii", true},
        {EventCategory::sessionEnded, false, "cc===cc", true, ended},
        {EventCategory::sessionEnded, true, "cc===cc", true, ended},
    };
}

TEST(SessionReducer, changesEveryStatusByEveryCategoryAsRuled) {
    for (const Rule& rule : rules()) {
        for (const SessionStatus status : allCases<SessionStatus>()) {
            SCOPED_TRACE(std::string{rawValue(rule.category)} + " in " +
                         std::string{rawValue(status)} + (rule.ended ? ", ended" : ""));
            const SessionSnapshot stored = storedIn(status, rule.ended);
            AgentEvent event = eventOf(rule.category);
            if (rule.category == EventCategory::attentionRequested)
                event.attention = AttentionKind::permission;

            const ReductionResult expected = expectedResult(rule, stored, event);
            const ReductionResult result = reducer.reduce(stored, event);
            EXPECT_EQ(rawValue(result.effect), rawValue(expected.effect));
            EXPECT_EQ(rawValue(result.current->status), rawValue(expected.current->status));
            EXPECT_EQ(result, expected);
        }
    }
}

TEST(SessionReducer, ignoresWhatCarriesNoStatusButCountsAndSignsIt) {
    for (const auto category : {EventCategory::informational, EventCategory::unrecognized}) {
        for (const SessionStatus status : allCases<SessionStatus>()) {
            const SessionSnapshot stored = storedIn(status, status == SessionStatus::failed);
            const AgentEvent event = eventOf(category);
            const ReductionResult expected{EventEffect::ignored, stored,
                                           touchedAndSigned(stored, event)};
            EXPECT_EQ(reducer.reduce(stored, event), expected) << rawValue(status);
        }
        EXPECT_EQ(reducer.reduce(fullSnapshot(), eventOf(category, after(0))).effect,
                  EventEffect::ignored)
            << "even an old one";
    }
}

TEST(SessionReducer, clearsALeftoverAttentionWhereverItSetsTheStatusAgain) {
    struct Row {
        EventCategory category;
        SessionStatus status;
        bool ended;
        bool isSetAgain;
    };
    for (const auto& [category, status, ended, isSetAgain] : {
             Row{EventCategory::sessionStarted, SessionStatus::unknown, true, true},
             Row{EventCategory::promptSubmitted, SessionStatus::working, false, true},
             Row{EventCategory::turnCompleted, SessionStatus::completed, false, true},
             Row{EventCategory::turnFailed, SessionStatus::failed, false, true},
             Row{EventCategory::turnInterrupted, SessionStatus::interrupted, false, true},
             Row{EventCategory::sessionEnded, SessionStatus::completed, true, true},
             Row{EventCategory::sessionStarted, SessionStatus::unknown, false, false},
             Row{EventCategory::activity, SessionStatus::working, false, false},
             Row{EventCategory::activity, SessionStatus::stale, false, false},
         }) {
        SCOPED_TRACE(rawValue(category));
        SessionSnapshot stored = storedIn(status, ended);
        stored.attention = AttentionKind::permission;
        const auto result = reducer.reduce(stored, eventOf(category));
        EXPECT_EQ(result.effect, isSetAgain ? EventEffect::applied : EventEffect::confirmed);
        EXPECT_EQ(result.current->status, status);
        EXPECT_EQ(result.current->attention.has_value(), !isSetAgain);
        EXPECT_EQ(result.current->statusSince, isSetAgain ? after(100) : after(40));
    }
}

TEST(SessionReducer, tellsThePendingRequestsApartByTheirKind) {
    struct Row {
        std::optional<AttentionKind> pending;
        std::optional<AttentionKind> requested;
        AttentionKind attention;
        EventEffect effect;
    };
    constexpr auto permission = AttentionKind::permission;
    constexpr auto input = AttentionKind::input;
    for (const auto& [pending, requested, attention, effect] : {
             Row{permission, permission, permission, EventEffect::confirmed},
             Row{permission, input, input, EventEffect::applied},
             Row{permission, std::nullopt, input, EventEffect::applied},
             Row{input, permission, permission, EventEffect::applied},
             Row{input, input, input, EventEffect::confirmed},
             Row{input, std::nullopt, input, EventEffect::confirmed},
             Row{std::nullopt, permission, permission, EventEffect::applied},
             Row{std::nullopt, input, input, EventEffect::applied},
             Row{std::nullopt, std::nullopt, input, EventEffect::applied},
         }) {
        SessionSnapshot stored = storedIn(SessionStatus::needsAttention);
        stored.attention = pending;
        AgentEvent event = eventOf(EventCategory::attentionRequested);
        event.attention = requested;
        const auto result = reducer.reduce(stored, event);
        EXPECT_EQ(result.effect, effect);
        EXPECT_EQ(result.current->attention, attention);
        EXPECT_EQ(result.statusChanged(), effect == EventEffect::applied);
        EXPECT_EQ(result.current->statusSince,
                  effect == EventEffect::applied ? after(100) : after(40));
    }
}

TEST(SessionReducer, beginsASessionWithItsFirstEventWhateverItsCategory) {
    struct Row {
        EventCategory category;
        SessionStatus status;
        EventEffect effect = EventEffect::applied;
    };
    for (const auto& [category, status, effect] : {
             Row{EventCategory::sessionStarted, SessionStatus::unknown},
             Row{EventCategory::promptSubmitted, SessionStatus::working},
             Row{EventCategory::attentionRequested, SessionStatus::needsAttention},
             Row{EventCategory::activity, SessionStatus::working},
             Row{EventCategory::turnCompleted, SessionStatus::completed},
             Row{EventCategory::turnFailed, SessionStatus::failed},
             Row{EventCategory::turnInterrupted, SessionStatus::interrupted},
             Row{EventCategory::sessionEnded, SessionStatus::completed},
             Row{EventCategory::informational, SessionStatus::unknown, EventEffect::ignored},
             Row{EventCategory::unrecognized, SessionStatus::unknown, EventEffect::ignored},
         }) {
        const AgentEvent event = eventOf(category);
        SessionSnapshot session =
            SessionSnapshot::initial({Provider::codexCLI, "session-1"}, event);
        session.eventCount = 1;
        session.status = status;
        session.lastSignature = signatureOf(event);
        session.lastSignatureAt = after(100);
        if (effect == EventEffect::applied) session.lastAppliedAt = after(100);
        if (category == EventCategory::attentionRequested) session.attention = AttentionKind::input;
        if (category == EventCategory::promptSubmitted) session.promptCount = 1;
        if (category == EventCategory::turnCompleted) session.lastCompletedTurnID = "turn:2";
        if (category == EventCategory::sessionEnded) {
            session.sessionEnded = true;
            session.endedAt = after(100);
            session.endReason = "exit";
        }
        const ReductionResult result = reducer.reduce(std::nullopt, event);
        EXPECT_EQ(result, (ReductionResult{effect, std::nullopt, session})) << rawValue(category);
        EXPECT_TRUE(result.statusChanged()) << rawValue(category);
    }
}

TEST(SessionReducer, changesNothingByAnEventWithoutSession) {
    AgentEvent event = eventOf(EventCategory::promptSubmitted);
    event.sessionID.reset();
    EXPECT_EQ(reducer.reduce(std::nullopt, event),
              (ReductionResult{EventEffect::noSession, std::nullopt, std::nullopt}));
    EXPECT_EQ(reducer.reduce(fullSnapshot(), event),
              (ReductionResult{EventEffect::noSession, fullSnapshot(), fullSnapshot()}));
    event.sessionID = "";
    EXPECT_EQ(reducer.reduce(std::nullopt, event).current->key,
              (SessionKey{Provider::codexCLI, ""}));
}

TEST(SessionReducer, signsWithTenPartsThatMayBeEmpty) {
    const auto signature = [](const AgentEvent& event) {
        return reducer.reduce(std::nullopt, event).current->lastSignature;
    };
    EXPECT_EQ(signature(fullEvent()),
              "notify|PermissionRequest|attentionRequested|permission|turn:1|permission_prompt|"
              "Bash|startup|other|server_error");
    AgentEvent bare = minimalEvent();
    bare.sessionID = "S1";
    EXPECT_EQ(signature(bare), "hook|Stop|turnCompleted|||||||");
    bare.eventType = "";
    EXPECT_EQ(signature(bare), "hook||turnCompleted|||||||");
}

// A session whose last event was `eventOf(category)` at 100 seconds.
SessionSnapshot seen(EventCategory category) {
    return *reducer.reduce(storedIn(SessionStatus::working), eventOf(category)).current;
}

TEST(SessionReducer, knowsACopyOfTheLastEventWithinTheWindow) {
    SessionSnapshot stored = seen(EventCategory::attentionRequested);
    stored.origin = EventOrigin::demo;
    for (const double seconds : {98.0, 99.0, 100.0, 101.5, 102.0}) {
        AgentEvent event = eventOf(EventCategory::attentionRequested, after(seconds));
        event.id = sampleID("00000000-0000-4000-8000-000000000000");
        event.cwd = "/elsewhere";
        event.tty = "ttys010";
        SessionSnapshot touched = stored;
        touched.eventCount += 1;
        touched.lastSeenAt = after(std::max(seconds, 100.0));
        if (seconds >= 100) touched.tty = "ttys010";
        touched.origin = EventOrigin::live;
        EXPECT_EQ(reducer.reduce(stored, event),
                  (ReductionResult{EventEffect::duplicate, stored, touched}))
            << seconds;
    }
    AgentEvent other = eventOf(EventCategory::attentionRequested);
    other.detail.toolName = "Read";
    EXPECT_EQ(reducer.reduce(stored, other).effect, EventEffect::confirmed);
    EXPECT_EQ(
        reducer.reduce(seen(EventCategory::informational), eventOf(EventCategory::informational))
            .effect,
        EventEffect::duplicate);
}

TEST(SessionReducer, takesTheWindowFromItsCaller) {
    const SessionSnapshot stored = seen(EventCategory::promptSubmitted);
    struct Row {
        double window;
        double seconds;
        EventEffect effect;
    };
    for (const auto& [window, seconds, effect] : {
             Row{2, 97.999999, EventEffect::outOfOrder},
             Row{2, 98, EventEffect::duplicate},
             Row{2, 102.000001, EventEffect::confirmed},
             Row{0, 100, EventEffect::duplicate},
             Row{0, 100.000001, EventEffect::confirmed},
             Row{0.3, 100.3, EventEffect::duplicate},
             Row{0.3, 100.300001, EventEffect::confirmed},
             Row{-1, 100, EventEffect::confirmed},
         })
        EXPECT_EQ(SessionReducer{Seconds{window}}
                      .reduce(stored, eventOf(EventCategory::promptSubmitted, after(seconds)))
                      .effect,
                  effect)
            << window << " " << seconds;
}

TEST(SessionReducer, measuresTheWindowFromTheFirstCopy) {
    const auto next = [](const ReductionResult& before, double seconds) {
        return reducer.reduce(std::optional{before.current},
                              eventOf(EventCategory::turnFailed, after(seconds)));
    };
    const auto first = next({}, 0);
    const auto copy = next(first, 1.5);
    EXPECT_EQ(copy.effect, EventEffect::duplicate);
    EXPECT_EQ(copy.current->lastSignatureAt, after(0));
    const auto later = next(copy, 3);
    EXPECT_EQ(later.effect, EventEffect::confirmed);
    EXPECT_EQ(later.current->lastSignatureAt, after(3));
}

TEST(SessionReducer, findsNoDuplicateWithoutSignatureOrItsTime) {
    const AgentEvent event = eventOf(EventCategory::promptSubmitted);
    SessionSnapshot untimed = seen(EventCategory::promptSubmitted);
    SessionSnapshot unsigned_ = untimed;
    untimed.lastSignatureAt.reset();
    unsigned_.lastSignature.reset();
    EXPECT_EQ(reducer.reduce(untimed, event).effect, EventEffect::confirmed);
    EXPECT_EQ(reducer.reduce(unsigned_, event).effect, EventEffect::confirmed);
}

TEST(SessionReducer, knowsATurnThatCompletedBeforeAtAnyDistance) {
    SessionSnapshot stored = storedIn(SessionStatus::working);
    stored.lastCompletedTurnID = "turn:2";
    for (const double seconds : {-1e8, 10.0, 100.0, 1e8}) {
        AgentEvent event = eventOf(EventCategory::turnCompleted, after(seconds));
        const auto result = reducer.reduce(stored, event);
        EXPECT_EQ(result.effect, EventEffect::duplicate) << seconds;
        EXPECT_EQ(result.previous, stored);
        SessionSnapshot touched = stored;
        touched.eventCount += 1;
        touched.origin = EventOrigin::live;
        if (seconds > 60) {
            touched.lastSeenAt = after(seconds);
            touched.tty = "ttys009";
        }
        EXPECT_EQ(result.current, touched) << "signed or applied at " << seconds;
    }
}

TEST(SessionReducer, completesATurnThatIsNotTheLastCompletedOne) {
    using Turn = std::optional<std::string>;
    const auto effect = [](EventCategory category, Turn completed, Turn turnID) {
        SessionSnapshot stored = storedIn(SessionStatus::working);
        stored.lastCompletedTurnID = std::move(completed);
        AgentEvent event = eventOf(category);
        event.turnID = std::move(turnID);
        return reducer.reduce(stored, event).effect;
    };
    using enum EventCategory;
    EXPECT_EQ(effect(turnCompleted, "a", "b"), EventEffect::applied);
    EXPECT_EQ(effect(turnCompleted, "a", std::nullopt), EventEffect::applied);
    EXPECT_EQ(effect(turnCompleted, std::nullopt, std::nullopt), EventEffect::applied);
    EXPECT_EQ(effect(turnFailed, "a", "a"), EventEffect::applied) << "failed turns have no memory";
}

TEST(SessionReducer, appliesNoEventOlderThanTheLastAppliedOne) {
    SessionSnapshot stored = storedIn(SessionStatus::working);
    const AgentEvent late = eventOf(EventCategory::turnFailed, after(49.999999));
    SessionSnapshot expected = stored;
    expected.eventCount += 1;
    expected.origin = EventOrigin::live;
    expected.lastSignature = signatureOf(late);
    expected.lastSignatureAt = after(49.999999);
    EXPECT_EQ(reducer.reduce(stored, late),
              (ReductionResult{EventEffect::outOfOrder, stored, expected}));

    const auto inTime = reducer.reduce(stored, eventOf(EventCategory::turnFailed, after(50)));
    EXPECT_EQ(inTime.effect, EventEffect::applied);
    EXPECT_EQ(inTime.current->lastAppliedAt, after(50));
    EXPECT_EQ(inTime.current->lastSeenAt, after(60)) << "what was seen later stays seen";
}

TEST(SessionReducer, takesTheTerminalOnlyFromTheLatestEvent) {
    const auto terminal = [](Instant observedAt, std::optional<std::string> tty) {
        AgentEvent event = eventOf(EventCategory::activity, observedAt);
        event.tty = std::move(tty);
        return reducer.reduce(storedIn(SessionStatus::working), event).current->tty;
    };
    EXPECT_EQ(terminal(after(59.999999), "ttys009"), "ttys003");
    EXPECT_EQ(terminal(after(60), "ttys009"), "ttys009");
    EXPECT_EQ(terminal(after(61), std::nullopt), "ttys003");

    SessionSnapshot stored = storedIn(SessionStatus::working);
    stored.lastSeenAt = after(20);
    const auto late = reducer.reduce(stored, eventOf(EventCategory::turnFailed, after(20)));
    EXPECT_EQ(late.effect, EventEffect::outOfOrder);
    EXPECT_EQ(late.current->tty, "ttys009");
}

TEST(SessionReducer, makesASessionLiveForGoodByOneLiveEvent) {
    for (const EventOrigin before : allCases<EventOrigin>()) {
        for (const EventOrigin origin : allCases<EventOrigin>()) {
            SessionSnapshot stored = storedIn(SessionStatus::working);
            stored.origin = before;
            AgentEvent event = eventOf(EventCategory::activity);
            event.origin = origin;
            EXPECT_EQ(reducer.reduce(stored, event).current->origin,
                      origin == EventOrigin::live ? EventOrigin::live : before);
        }
    }
}

TEST(SessionReducer, keepsWhatAnEventDoesNotTell) {
    const auto reduced = [](EventCategory category) {
        AgentEvent event = eventOf(category);
        event.turnID.reset();
        event.cwd.reset();
        event.detail.endReason.reset();
        return *reducer.reduce(fullSnapshot(), event).current;
    };
    EXPECT_EQ(reduced(EventCategory::turnCompleted).lastCompletedTurnID, "turn:1");
    EXPECT_EQ(reduced(EventCategory::promptSubmitted).cwd, "/Users/x/proj");
    EXPECT_FALSE(reduced(EventCategory::sessionEnded).endReason) << "but of no earlier end";
}

constexpr auto full = std::numeric_limits<std::int64_t>::max();

TEST(SessionReducer, countsToTheLastNumber) {
    SessionSnapshot stored = fullSnapshot();
    stored.eventCount = full - 1;
    stored.promptCount = full - 1;
    const auto result = reducer.reduce(stored, eventOf(EventCategory::promptSubmitted));
    EXPECT_EQ(result.current->eventCount, full);
    EXPECT_EQ(result.current->promptCount, full);
}

TEST(SessionReducerDeathTest, endsTheProgramWhenACounterIsFull) {
    SessionSnapshot stored = seen(EventCategory::turnFailed);
    stored.eventCount = full;
    for (const auto category :
         {EventCategory::promptSubmitted, EventCategory::informational, EventCategory::turnFailed})
        EXPECT_EXIT((void)reducer.reduce(stored, eventOf(category)),
                    testing::KilledBySignal(SIGABRT), "eventCount");

    stored.eventCount = 1;
    stored.promptCount = full;
    EXPECT_EXIT((void)reducer.reduce(stored, eventOf(EventCategory::promptSubmitted)),
                testing::KilledBySignal(SIGABRT), "promptCount");
    EXPECT_EQ(reducer.reduce(stored, eventOf(EventCategory::activity, after(200))).effect,
              EventEffect::ignored)
        << "a full counter harms no event that does not count on it";
}

}  // namespace
}  // namespace tallowbrook
