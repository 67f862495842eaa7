#include "Notifications/NotificationPolicy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
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

    NotificationContent content(NotificationKind kind = NotificationKind::completion) const {
        return NotificationPolicy::makeContent(kind, *result.current, event, preferences.playSound);
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

TEST(NotificationPolicy, listsTheRawTextsOfKindsAndSuppressionsInOrder) {
    std::vector<std::string_view> texts;
    for (const auto kind : allCases<NotificationKind>()) {
        EXPECT_EQ(static_cast<std::size_t>(kind), texts.size());
        texts.push_back(rawValue(kind));
    }
    EXPECT_THAT(texts, ElementsAre("attention", "failure", "completion", "reminder"));
    texts.clear();
    for (const auto reason : allCases<NotificationSuppression>()) {
        EXPECT_EQ(static_cast<std::size_t>(reason), texts.size());
        texts.push_back(rawValue(reason));
    }
    EXPECT_THAT(texts, ElementsAre("disabled", "paused", "kindDisabled", "staleBacklog",
                                   "quietHours", "duplicate"));
}

TEST(NotificationPolicy, notifiesWhereCategoryAndStatusAgree) {
    for (const EventCategory category : allCases<EventCategory>()) {
        for (const SessionStatus status : allCases<SessionStatus>()) {
            std::string expected = "notApplicable";
            if (category == EventCategory::turnFailed && status == SessionStatus::failed)
                expected = "deliver failure";
            if (category == EventCategory::turnCompleted && status == SessionStatus::completed)
                expected = "deliver completion";
            if (category == EventCategory::attentionRequested &&
                status == SessionStatus::needsAttention)
                expected = "deliver attention";
            Question question;
            question.event = eventOf(category);
            question.result = turnedTo(status);
            if (status == SessionStatus::unknown) question.result.previous.reset();
            EXPECT_EQ(described(question.answer()), expected)
                << rawValue(category) << " " << rawValue(status);
        }
    }
}

TEST(NotificationPolicy, notifiesOnlyOfAnAppliedEvent) {
    for (const EventEffect effect : allCases<EventEffect>()) {
        Question question;
        question.result.effect = effect;
        EXPECT_EQ(described(question.answer()),
                  effect == EventEffect::applied ? "deliver completion" : "notApplicable")
            << rawValue(effect);
    }
}

TEST(NotificationPolicy, notifiesOnlyOfAChangedStatus) {
    Question question;
    question.result.previous = question.result.current;
    EXPECT_EQ(described(question.answer()), "notApplicable");
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

TEST(NotificationPolicy, carriesTheContentInItsDecision) {
    Question question;
    EXPECT_EQ(question.answer(), NotificationDecision::deliver(question.content()));
    question.preferences.playSound = false;
    EXPECT_FALSE(question.content().playSound);
    EXPECT_EQ(question.answer(), NotificationDecision::deliver(question.content()));
    question.preferences.paused = true;
    EXPECT_EQ(question.answer(), NotificationDecision::suppressed(NotificationSuppression::paused,
                                                                  question.content()));
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
    struct Row {
        EventCategory category;
        SessionStatus status;
        bool NotificationPreferences::* ownSwitch;
    };
    using Preferences = NotificationPreferences;
    for (const auto& [category, status, ownSwitch] : {
             Row{EventCategory::attentionRequested, SessionStatus::needsAttention,
                 &Preferences::notifyOnAttention},
             Row{EventCategory::turnCompleted, SessionStatus::completed,
                 &Preferences::notifyOnCompletion},
             Row{EventCategory::turnFailed, SessionStatus::failed, &Preferences::notifyOnFailure},
         }) {
        Question question;
        question.event = eventOf(category);
        question.result = turnedTo(status);
        question.preferences.*ownSwitch = false;
        EXPECT_THAT(described(question.answer()), testing::StartsWith("suppressed kindDisabled"));

        for (const auto other : {&Preferences::notifyOnAttention, &Preferences::notifyOnCompletion,
                                 &Preferences::notifyOnFailure})
            question.preferences.*other = other == ownSwitch;
        EXPECT_THAT(described(question.answer()), testing::StartsWith("deliver"));
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
    const auto second = reducer.reduce(first.current, request);
    EXPECT_EQ(decide(request, second, after(0)), "suppressed duplicate attention");
    EXPECT_EQ(decide(request, second, after(-20)), "deliver attention");
    const auto third = reducer.reduce(second.current, again);
    EXPECT_EQ(third.effect, EventEffect::confirmed);
    EXPECT_EQ(decide(again, third, std::nullopt), "notApplicable");
}

TEST(NotificationContent, fillsEveryField) {
    AgentEvent event = eventOf(EventCategory::attentionRequested);
    event.detail.toolName = "Bash";
    const NotificationContent expected{
        .kind = NotificationKind::attention,
        .title = "Claude Code needs permission",
        .body = "checkout-api \u2014 waiting for approval to use Bash.",
        .sessionStorageID = "claudeCode|S1",
        .eventID = sampleID(),
        .dedupeKey = "claudeCode|S1|attention",
        .playSound = true,
    };
    EXPECT_EQ(
        NotificationPolicy::makeContent(NotificationKind::attention,
                                        sessionIn(SessionStatus::needsAttention), event, true),
        expected);
}

struct Texts {
    std::string title;
    std::string body;
    bool operator==(const Texts&) const = default;
};

void PrintTo(const Texts& texts, std::ostream* stream) {
    *stream << texts.title << " / " << texts.body;
}

Texts textsOf(NotificationKind kind, const SessionSnapshot& session, const AgentEvent& event) {
    const auto content = NotificationPolicy::makeContent(kind, session, event, false);
    EXPECT_EQ(content.dedupeKey,
              content.sessionStorageID + "|" + std::string{rawValue(content.kind)});
    EXPECT_FALSE(content.playSound);
    return {content.title, content.body};
}

TEST(NotificationContent, wordsARequestForAttention) {
    auto session = sessionIn(SessionStatus::needsAttention);
    auto event = eventOf(EventCategory::attentionRequested);
    const Texts withoutTool{"Claude Code needs permission",
                            "checkout-api \u2014 waiting for approval."};
    EXPECT_EQ(textsOf(NotificationKind::attention, session, event), withoutTool);
    session.attention.reset();
    EXPECT_EQ(textsOf(NotificationKind::attention, session, event), withoutTool);

    event.detail.toolName = "Bash";
    session.attention = AttentionKind::input;
    EXPECT_EQ(
        textsOf(NotificationKind::attention, session, event),
        (Texts{"Claude Code needs your input", "checkout-api \u2014 waiting for your response."}));
}

TEST(NotificationContent, takesTheToolFromTheEventAndNotFromTheSession) {
    auto session = sessionIn(SessionStatus::needsAttention);
    session.statusDetail.toolName = "Edit";
    EXPECT_EQ(
        textsOf(NotificationKind::attention, session, eventOf(EventCategory::attentionRequested))
            .body,
        "checkout-api \u2014 waiting for approval.");
}

TEST(NotificationContent, wordsAFailureACompletionAndAReminder) {
    auto session = sessionIn(SessionStatus::failed);
    session.key.provider = Provider::codexCLI;
    auto event = eventOf(EventCategory::turnFailed);
    EXPECT_EQ(textsOf(NotificationKind::failure, session, event),
              (Texts{"Codex CLI turn failed", "checkout-api \u2014 error reported."}));
    event.detail.errorType = "rate_limit";
    EXPECT_EQ(textsOf(NotificationKind::failure, session, event),
              (Texts{"Codex CLI turn failed", "checkout-api \u2014 rate_limit."}));
    EXPECT_EQ(textsOf(NotificationKind::completion, session, event),
              (Texts{"Codex CLI finished", "checkout-api \u2014 turn completed."}));
    EXPECT_EQ(textsOf(NotificationKind::reminder, session, event),
              (Texts{"Codex CLI is still waiting", "checkout-api."}));
}

TEST(NotificationContent, saysWhenTheProjectIsUnknown) {
    auto session = sessionIn(SessionStatus::completed);
    session.cwd.reset();
    EXPECT_EQ(
        textsOf(NotificationKind::completion, session, eventOf(EventCategory::turnCompleted)).body,
        "Project unavailable \u2014 turn completed.");
}

TEST(NotificationContent, marksWhatATestEventCaused) {
    const auto title = [](EventOrigin origin) {
        auto event = eventOf(EventCategory::turnCompleted);
        event.origin = origin;
        auto session = sessionIn(SessionStatus::completed);
        session.origin = EventOrigin::test;  // the event's own origin counts
        return textsOf(NotificationKind::completion, session, event).title;
    };
    EXPECT_EQ(title(EventOrigin::test), "Test: Claude Code finished");
    EXPECT_EQ(title(EventOrigin::live), "Claude Code finished");
    EXPECT_EQ(title(EventOrigin::demo), "Claude Code finished");
}

}  // namespace
}  // namespace tallowbrook
