#include "Notifications/ReminderPolicy.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>

#include "Support/SampleSnapshots.h"

namespace tallowbrook {
namespace {

const Calendar utc = Calendar::fixed(std::chrono::minutes{0});

constexpr Seconds minutes(double count) { return Seconds{count * 60}; }

int earned(Seconds waited, Seconds interval) { return ReminderPolicy::earned(waited, interval); }

SessionSnapshot waitingSession() {
    SessionSnapshot session = minimalSnapshot();
    session.status = SessionStatus::needsAttention;
    session.attention = AttentionKind::permission;
    session.cwd = "/Users/x/checkout-api";
    return session;
}

// The least that lets a reminder through.
NotificationPreferences openPreferences() {
    NotificationPreferences preferences;
    preferences.enabled = true;
    preferences.notifyOnAttention = true;
    return preferences;
}

// One call of the policy, ten minutes after the session began to wait unless said.
struct Question {
    SessionSnapshot session = waitingSession();
    int sent = 0;
    Seconds interval = minutes(10);
    NotificationPreferences preferences = openPreferences();
    Seconds waited = minutes(10);

    std::optional<NotificationContent> answer() const {
        return ReminderPolicy::due(session, sent, interval, preferences, after(waited.count()),
                                   utc);
    }
    bool isDue() const { return answer().has_value(); }
    std::string body() const { return isDue() ? answer()->body : "none"; }
};

TEST(ReminderPolicy, earnsOneReminderForEachWholeInterval) {
    struct Row {
        const char* why;
        Seconds waited;
        Seconds interval;
        int earned;
    };
    for (const auto& [why, waited, interval, expected] : {
             Row{"a moment before the first", Seconds{599.999999}, minutes(10), 0},
             Row{"the first", minutes(10), minutes(10), 1},
             Row{"a second before the third", Seconds{29 * 60 + 59}, minutes(10), 2},
             Row{"the third", minutes(30), minutes(10), 3},
             Row{"no fourth", minutes(40), minutes(10), 3},
             Row{"capped", minutes(45), minutes(5), 3},
             Row{"capped far beyond", Seconds{1e17}, Seconds{1}, 3},
             Row{"an interval of part of a second", Seconds{0.5}, Seconds{0.25}, 2},
             Row{"an endless interval", minutes(10),
                 Seconds{std::numeric_limits<double>::infinity()}, 0},
         })
        EXPECT_EQ(earned(waited, interval), expected) << why;
}

TEST(ReminderPolicy, earnsNothingWithoutAPositiveWaitAndInterval) {
    const Seconds none{std::numeric_limits<double>::quiet_NaN()};
    for (const Seconds bad : {Seconds{0}, Seconds{-0.0}, Seconds{-1}, minutes(-30), none}) {
        EXPECT_EQ(earned(minutes(10), bad), 0) << bad.count();
        EXPECT_EQ(earned(bad, minutes(10)), 0) << bad.count();
        EXPECT_EQ(earned(bad, bad), 0) << bad.count();
    }
}

TEST(ReminderPolicyDeathTest, endsTheProgramWhenTheCountIsNo64BitInteger) {
    const Seconds endless{std::numeric_limits<double>::infinity()};
    const Seconds least{std::numeric_limits<double>::denorm_min()};
    const auto outOfRange = [](Seconds waited, Seconds interval) {
        EXPECT_EXIT(earned(waited, interval), testing::KilledBySignal(SIGABRT), "out of range");
    };
    outOfRange(endless, Seconds{1});
    outOfRange(endless, endless);
    outOfRange(Seconds{1}, least);
    outOfRange(Seconds{9223372036854775808.0}, Seconds{1});
    EXPECT_EQ(earned(Seconds{9223372036854774784.0}, Seconds{1}), 3) << "the largest below";

    Question question;
    question.interval = least;
    EXPECT_EXIT(question.answer(), testing::KilledBySignal(SIGABRT), "out of range");
}

TEST(ReminderPolicy, becomesDueAfterEachIntervalUntilAllThreeAreSent) {
    Question question;
    for (int sent = 0; sent < 3; ++sent) {
        question.sent = sent;
        question.waited = minutes(10 * (sent + 1)) - Seconds{0.000001};
        EXPECT_FALSE(question.isDue()) << sent;
        question.waited = minutes(10 * (sent + 1));
        EXPECT_TRUE(question.isDue()) << sent;
    }
    question.sent = 3;
    for (const double waited : {30.0, 40.0, 1000.0}) {
        question.waited = minutes(waited);
        EXPECT_FALSE(question.isDue()) << waited;
    }
}

TEST(ReminderPolicy, remindsOnlyOfSessionsThatWait) {
    for (const SessionStatus status : allCases<SessionStatus>()) {
        Question question;
        question.session.status = status;
        EXPECT_EQ(question.isDue(), status == SessionStatus::needsAttention) << rawValue(status);
    }
}

TEST(ReminderPolicy, isHeldBackByEachOfItsConditionsAlone) {
    struct Row {
        const char* why;
        std::function<void(Question&)> change;
        bool isDue = false;
    };
    for (const auto& [why, change, isDue] : {
             Row{"ended", [](Question& question) { question.session.sessionEnded = true; }},
             Row{"the setup's own",
                 [](Question& question) {
                     question.session.key.sessionID = "tallowbrook-setup-check-1";
                 }},
             Row{"disabled", [](Question& question) { question.preferences.enabled = false; }},
             Row{"paused", [](Question& question) { question.preferences.paused = true; }},
             Row{"switched off",
                 [](Question& question) { question.preferences.notifyOnAttention = false; }},
             Row{"the clock was set back",
                 [](Question& question) { question.waited = -minutes(60); }},
             Row{"no interval", [](Question& question) { question.interval = Seconds{0}; }},
             Row{"a negative interval",
                 [](Question& question) { question.interval = -minutes(10); }},
             Row{"more sent than earned", [](Question& question) { question.sent = 4; }},
             Row{"one that could not be sent in time is made up for",
                 [](Question& question) {
                     question.waited = Seconds{29 * 60 + 59};
                     question.sent = 1;
                 },
                 true},
             Row{"no other preference counts",
                 [](Question& question) {
                     question.preferences.notifyOnCompletion = false;
                     question.preferences.notifyOnFailure = false;
                     question.preferences.dedupeInterval = minutes(1000);
                     question.preferences.maxEventAge = Seconds{0};
                 },
                 true},
         }) {
        Question question;
        change(question);
        EXPECT_EQ(question.isDue(), isDue) << why;
    }
}

TEST(ReminderPolicy, isSilentInQuietHoursOfNowAndDueBehindThem) {
    Question question;  // waiting since 03:30:55.123, asked at 03:40:55.123
    question.preferences.quietHours = {true, 220, 221};
    EXPECT_FALSE(question.isDue());
    question.waited = Seconds{604.876999};
    EXPECT_FALSE(question.isDue()) << "03:40:59.999999";
    question.waited = Seconds{604.877};
    EXPECT_TRUE(question.isDue()) << "03:41:00";
    question.preferences.quietHours = {true, 210, 211};
    EXPECT_TRUE(question.isDue()) << "quiet only when the wait began";
}

TEST(ReminderPolicy, fillsEveryField) {
    Question question;
    question.preferences.playSound = true;
    const auto content = question.answer();
    ASSERT_TRUE(content);
    const NotificationContent expected{
        .kind = NotificationKind::reminder,
        .title = "Claude Code is still waiting for permission",
        .body = "checkout-api \u2014 waiting for 10 min.",
        .sessionStorageID = "claudeCode|S1",
        .eventID = content->eventID,
        .dedupeKey = "claudeCode|S1|reminder",
        .playSound = true,
    };
    EXPECT_EQ(content, expected);
    question.preferences.playSound = false;
    EXPECT_FALSE(question.answer()->playSound);

    question.session.attention = AttentionKind::input;
    EXPECT_EQ(question.answer()->title, "Claude Code is still waiting for your input");
    question.session.attention.reset();
    question.session.origin = EventOrigin::test;
    question.session.key.provider = Provider::codexCLI;
    question.session.cwd.reset();
    EXPECT_EQ(question.answer()->title, "Test: Codex CLI is still waiting for permission");
    EXPECT_EQ(question.body(), "Project unavailable \u2014 waiting for 10 min.");
    question.session.origin = EventOrigin::demo;
    EXPECT_EQ(question.answer()->title, "Codex CLI is still waiting for permission");
}

TEST(ReminderPolicy, givesEachReminderAnIdOfItsOwn) {
    const Question question;
    const auto first = question.answer();
    const auto second = question.answer();
    ASSERT_TRUE(first && second);
    EXPECT_NE(first->eventID, second->eventID);
    EXPECT_EQ(UUIDText::text(first->eventID)[14], '4') << "a random one";
}

TEST(ReminderPolicy, countsWholeMinutesAndAtLeastOne) {
    Question question;
    question.interval = Seconds{1};
    for (const auto& [waited, expected] : {
             std::pair{1.0, "1"},
             std::pair{59.999999, "1"},
             std::pair{60.0, "1"},
             std::pair{119.999999, "1"},
             std::pair{120.0, "2"},
             std::pair{1799.0, "29"},
             std::pair{86400.0, "1440"},
         }) {
        question.waited = Seconds{waited};
        EXPECT_EQ(question.body(),
                  std::string{"checkout-api \u2014 waiting for "} + expected + " min.")
            << waited;
    }
}

}  // namespace
}  // namespace tallowbrook
