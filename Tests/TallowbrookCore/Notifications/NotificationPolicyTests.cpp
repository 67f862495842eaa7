#include "Notifications/NotificationPolicy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Support/SampleSnapshots.h"

namespace tallowbrook {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Calendar utc = Calendar::fixed(std::chrono::minutes{0});

AgentEvent eventOf(EventCategory category) {
    AgentEvent event = minimalEvent();
    event.category = category;
    event.sessionID = "S1";
    return event;
}

SessionSnapshot sessionIn(SessionStatus status) {
    SessionSnapshot session = minimalSnapshot();
    session.status = status;
    session.cwd = "/Users/x/checkout-api";
    if (status == SessionStatus::needsAttention) session.attention = AttentionKind::permission;
    return session;
}

ReductionResult turnedTo(SessionStatus status) {
    return {EventEffect::applied, sessionIn(SessionStatus::unknown), sessionIn(status)};
}

// Everything is on and nothing holds a notification back.
NotificationPreferences openPreferences() {
    return {
        .enabled = true,
        .paused = false,
        .notifyOnAttention = true,
        .notifyOnCompletion = true,
        .notifyOnFailure = true,
        .quietHours = {false, 0, 0},
        .dedupeInterval = Seconds{30},
        .maxEventAge = Seconds{300},
        .playSound = true,
    };
}

// One call of the policy, at the time of the event unless said.
struct Question {
    AgentEvent event = eventOf(EventCategory::turnCompleted);
    ReductionResult result = turnedTo(SessionStatus::completed);
    NotificationPreferences preferences = openPreferences();
    Instant now = sampleTime;
    std::optional<Instant> lastDelivered;

    NotificationDecision answer() const {
        return NotificationPolicy::decide(event, result, preferences, now, utc,
                                          [&](const std::string&) { return lastDelivered; });
    }
};

std::string described(const NotificationDecision& decision) {
    if (const auto* held = std::get_if<NotificationDecision::Suppressed>(&decision.outcome))
        return "suppressed " + std::string{rawValue(held->reason)} + " " +
               std::string{rawValue(held->content.kind)};
    if (const auto* due = std::get_if<NotificationDecision::Deliver>(&decision.outcome))
        return "deliver " + std::string{rawValue(due->content.kind)};
    return "notApplicable";
}

TEST(NotificationPolicy, notifiesWhereCategoryAndStatusAgree) {
    using Pair = std::pair<EventCategory, SessionStatus>;
    const std::map<Pair, std::string> kinds{
        {{EventCategory::turnFailed, SessionStatus::failed}, "failure"},
        {{EventCategory::turnCompleted, SessionStatus::completed}, "completion"},
        {{EventCategory::attentionRequested, SessionStatus::needsAttention}, "attention"},
    };
    for (const EventCategory category : allCases<EventCategory>()) {
        for (const SessionStatus status : allCases<SessionStatus>()) {
            Question question;
            question.event = eventOf(category);
            question.result = turnedTo(status);
            if (status == SessionStatus::unknown) question.result.previous.reset();
            const auto kind = kinds.find({category, status});
            EXPECT_EQ(described(question.answer()),
                      kind == kinds.end() ? "notApplicable" : "deliver " + kind->second)
                << rawValue(category) << " " << rawValue(status);
        }
    }
}

TEST(NotificationPolicy, notifiesOnlyOfAnAppliedEventThatChangedTheStatus) {
    for (const EventEffect effect : allCases<EventEffect>()) {
        Question question;
        question.result.effect = effect;
        EXPECT_EQ(described(question.answer()),
                  effect == EventEffect::applied ? "deliver completion" : "notApplicable")
            << rawValue(effect);
    }
    Question question;
    question.result.previous = question.result.current;
    question.result.previous->sessionEnded = true;
    EXPECT_EQ(described(question.answer()), "notApplicable") << "the ended flag is no status";
    question.result.previous.reset();
    EXPECT_EQ(described(question.answer()), "deliver completion") << "a new session";
    question.result.current.reset();
    EXPECT_EQ(described(question.answer()), "notApplicable");
}

TEST(NotificationPolicy, neverNotifiesOfTheSetupsOwnSessions) {
    Question question;
    question.result.current->key.sessionID = "tallowbrook-setup-check-1";
    EXPECT_EQ(described(question.answer()), "notApplicable");
    question.result.current->key.sessionID = "tallowbrook-setup-check";
    EXPECT_EQ(described(question.answer()), "deliver completion");
}

TEST(NotificationPolicy, holdsBackForTheFirstReasonInOrder) {
    Question question;
    question.preferences = {
        .quietHours = {true, 0, 1439},
        .dedupeInterval = Seconds{1000},
        .maxEventAge = Seconds{300},
    };
    question.preferences.paused = true;
    question.now = after(301);
    question.lastDelivered = after(300);
    const auto reason = [&] { return described(question.answer()); };
    EXPECT_EQ(reason(), "suppressed disabled completion");
    question.preferences.enabled = true;
    EXPECT_EQ(reason(), "suppressed paused completion");
    question.preferences.paused = false;
    EXPECT_EQ(reason(), "suppressed kindDisabled completion");
    question.preferences.notifyOnCompletion = true;
    EXPECT_EQ(reason(), "suppressed staleBacklog completion");
    question.preferences.maxEventAge = Seconds{301};
    EXPECT_EQ(reason(), "suppressed quietHours completion");
    question.preferences.quietHours.enabled = false;
    EXPECT_EQ(reason(), "suppressed duplicate completion");
    question.preferences.dedupeInterval = Seconds{1};
    EXPECT_EQ(reason(), "deliver completion");
}

TEST(NotificationPolicy, obeysTheSwitchOfEachKindAlone) {
    using Preferences = NotificationPreferences;
    const std::vector switches{&Preferences::notifyOnAttention, &Preferences::notifyOnCompletion,
                               &Preferences::notifyOnFailure};
    const std::vector<std::pair<EventCategory, SessionStatus>> kinds{
        {EventCategory::attentionRequested, SessionStatus::needsAttention},
        {EventCategory::turnCompleted, SessionStatus::completed},
        {EventCategory::turnFailed, SessionStatus::failed},
    };
    for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
        for (std::size_t other = 0; other < switches.size(); ++other) {
            Question question;
            question.event = eventOf(kinds[kind].first);
            question.result = turnedTo(kinds[kind].second);
            question.preferences.*switches[other] = false;
            EXPECT_THAT(described(question.answer()),
                        testing::StartsWith(kind == other ? "suppressed kindDisabled" : "deliver"));
        }
    }
}

TEST(NotificationPolicy, leavesAStaleBacklogUnspoken) {
    Question question;
    question.now = after(300);
    EXPECT_EQ(described(question.answer()), "deliver completion");
    question.now = after(300.000001);
    EXPECT_EQ(described(question.answer()), "suppressed staleBacklog completion");
    question.now = after(-5);
    EXPECT_EQ(described(question.answer()), "deliver completion") << "a clock that was set back";
}

TEST(NotificationPolicy, asksForQuietHoursNowAndNotAtTheEvent) {
    Question question;  // the event came at 03:30:55
    question.preferences.quietHours = {true, 0, 212};
    question.now = after(64);
    EXPECT_EQ(described(question.answer()), "suppressed quietHours completion");
    question.now = after(65);
    EXPECT_EQ(described(question.answer()), "deliver completion");
}

TEST(NotificationPolicy, repeatsAKeyOnlyAfterTheInterval) {
    Question question;
    question.now = after(100);
    question.lastDelivered = after(70.000001);
    EXPECT_EQ(described(question.answer()), "suppressed duplicate completion");
    question.lastDelivered = after(70);
    EXPECT_EQ(described(question.answer()), "deliver completion");
    question.lastDelivered = after(100);
    EXPECT_EQ(described(question.answer()), "suppressed duplicate completion");
    question.preferences.dedupeInterval = Seconds{0};
    EXPECT_EQ(described(question.answer()), "deliver completion");
    question.lastDelivered.reset();
    EXPECT_EQ(described(question.answer()), "deliver completion");
}

TEST(NotificationPolicy, asksForTheLastDeliveryOnlyWhenNothingElseHoldsBack) {
    Question question;
    std::vector<std::string> asked;
    const auto decide = [&] {
        asked.clear();
        return NotificationPolicy::decide(question.event, question.result, question.preferences,
                                          question.now, utc,
                                          [&](const std::string& key) -> std::optional<Instant> {
                                              asked.push_back(key);
                                              return std::nullopt;
                                          });
    };
    (void)decide();
    EXPECT_THAT(asked, ElementsAre("claudeCode|S1|completion"));
    question.preferences.enabled = false;
    (void)decide();
    EXPECT_THAT(asked, IsEmpty());
    question.result.effect = EventEffect::confirmed;
    (void)decide();
    EXPECT_THAT(asked, IsEmpty());
}

TEST(NotificationPolicy, notifiesAgainWhenPermissionFollowsAQuestion) {
    const SessionReducer reducer{.duplicateWindow = Seconds{2}};
    AgentEvent question = eventOf(EventCategory::attentionRequested);
    question.attention = AttentionKind::input;
    AgentEvent request = question;
    request.attention = AttentionKind::permission;
    request.observedAt = after(10);
    AgentEvent again = request;
    again.observedAt = after(20);

    const auto decide = [](const AgentEvent& event, const ReductionResult& result,
                           std::optional<Instant> last) {
        return described(NotificationPolicy::decide(event, result, openPreferences(),
                                                    event.observedAt, utc,
                                                    [&](const std::string&) { return last; }));
    };
    const auto first = reducer.reduce(std::nullopt, question);
    EXPECT_EQ(decide(question, first, std::nullopt), "deliver attention");
    const auto second = reducer.reduce(std::optional{first.current}, request);
    EXPECT_EQ(decide(request, second, after(0)), "suppressed duplicate attention");
    EXPECT_EQ(decide(request, second, after(-20)), "deliver attention");
    const auto third = reducer.reduce(std::optional{second.current}, again);
    EXPECT_EQ(third.effect, EventEffect::confirmed);
    EXPECT_EQ(decide(again, third, std::nullopt), "notApplicable");
}

TEST(NotificationContent, fillsEveryFieldOfWhatIsDeliveredOrHeldBack) {
    Question question;
    question.event = eventOf(EventCategory::attentionRequested);
    question.event.detail.toolName = "Bash";
    question.result = turnedTo(SessionStatus::needsAttention);
    NotificationContent expected{
        .kind = NotificationKind::attention,
        .title = "Claude Code needs permission",
        .body = "checkout-api \u2014 waiting for approval to use Bash.",
        .sessionStorageID = "claudeCode|S1",
        .eventID = sampleID(),
        .dedupeKey = "claudeCode|S1|attention",
        .playSound = true,
    };
    EXPECT_EQ(question.answer(), NotificationDecision::deliver(expected));
    question.preferences.paused = true;
    question.preferences.playSound = expected.playSound = false;
    EXPECT_EQ(question.answer(),
              NotificationDecision::suppressed(NotificationSuppression::paused, expected));
}

TEST(NotificationContent, isWordedByKindAndByWhatIsKnown) {
    struct Row {
        NotificationKind kind;
        const char* title;
        const char* body;
        std::function<void(SessionSnapshot&, AgentEvent&)> change = [](auto&, auto&) {};
    };
    using enum NotificationKind;
    for (const auto& [kind, title, body, change] : {
             Row{attention, "Claude Code needs permission",
                 "checkout-api \u2014 waiting for approval.",
                 [](auto& session, auto&) { session.statusDetail.toolName = "not the event's"; }},
             Row{attention, "Claude Code needs permission",
                 "checkout-api \u2014 waiting for approval to use Bash.",
                 [](auto& session, auto& event) {
                     session.attention.reset();
                     event.detail.toolName = "Bash";
                 }},
             Row{attention, "Claude Code needs your input",
                 "checkout-api \u2014 waiting for your response.",
                 [](auto& session, auto& event) {
                     session.attention = AttentionKind::input;
                     event.detail.toolName = "Bash";
                 }},
             Row{failure, "Codex CLI turn failed", "checkout-api \u2014 error reported.",
                 [](auto& session, auto&) { session.key.provider = Provider::codexCLI; }},
             Row{failure, "Claude Code turn failed", "checkout-api \u2014 rate_limit.",
                 [](auto&, auto& event) { event.detail.errorType = "rate_limit"; }},
             Row{completion, "Claude Code finished", "checkout-api \u2014 turn completed."},
             Row{completion, "Claude Code finished", "Project unavailable \u2014 turn completed.",
                 [](auto& session, auto&) { session.cwd.reset(); }},
             Row{completion, "Test: Claude Code finished", "checkout-api \u2014 turn completed.",
                 [](auto&, auto& event) { event.origin = EventOrigin::test; }},
             Row{completion, "Claude Code finished", "checkout-api \u2014 turn completed.",
                 [](auto& session, auto& event) {
                     session.origin = EventOrigin::test;  // the event's own origin counts
                     event.origin = EventOrigin::demo;
                 }},
             Row{reminder, "Claude Code is still waiting", "checkout-api."},
         }) {
        auto session = sessionIn(SessionStatus::needsAttention);
        auto event = eventOf(EventCategory::attentionRequested);
        change(session, event);
        const auto content = NotificationPolicy::makeContent(kind, session, event, false);
        EXPECT_EQ(content.title, title);
        EXPECT_EQ(content.body, body);
        EXPECT_EQ(content.dedupeKey,
                  content.sessionStorageID + "|" + std::string{rawValue(content.kind)});
    }
}

}  // namespace
}  // namespace tallowbrook
