#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <string>

#include "SessionState/SessionReducer.h"
#include "SessionState/SessionSnapshotCoding.h"
#include "Support/SampleSnapshots.h"

namespace tallowbrook {
namespace {

const SessionReducer reducer{.duplicateWindow = Seconds{2}};

class RandomEvents {
 public:
    explicit RandomEvents(unsigned seed) : generator_{seed} {}

    // The next event of one session: mostly forward in time, now and then back, from pools so small
    // that copies come up.
    AgentEvent next() {
        AgentEvent event = minimalEvent();
        event.origin = pick<EventOrigin>();
        event.category = pick<EventCategory>();
        event.eventType = rawValue(event.category);
        if (chance(50)) event.attention = pick<AttentionKind>();
        if (!chance(3)) event.sessionID = "S1";
        if (chance(50)) event.turnID = "turn:" + std::to_string(below(4));
        if (chance(50)) event.tty = "ttys00" + std::to_string(below(3));
        if (chance(50)) event.cwd = "/project/" + std::to_string(below(3));
        if (chance(20)) event.detail.toolName = "Bash";
        if (chance(20)) event.detail.endReason = "other";
        clock_ += std::chrono::milliseconds{below(8000) - 2000};
        event.observedAt = clock_;
        return event;
    }

 private:
    int below(int limit) { return std::uniform_int_distribution{0, limit - 1}(generator_); }
    bool chance(int percent) { return below(100) < percent; }

    template <typename Enum>
    Enum pick() {
        constexpr auto cases = allCases<Enum>();
        return cases[static_cast<std::size_t>(below(static_cast<int>(cases.size())))];
    }

    std::mt19937 generator_;
    Instant clock_ = sampleTime;
};

void expectNewSession(const SessionSnapshot& session, const AgentEvent& event) {
    EXPECT_EQ(session.eventCount, 1);
    EXPECT_EQ(session.firstSeenAt, event.observedAt);
    EXPECT_EQ(session.lastSeenAt, event.observedAt);
    EXPECT_EQ(session.origin, event.origin);
}

void expectSuccessor(const SessionSnapshot& before, const SessionSnapshot& session,
                     const AgentEvent& event, EventEffect effect) {
    EXPECT_EQ(session.key, before.key);
    EXPECT_EQ(session.firstSeenAt, before.firstSeenAt);
    EXPECT_EQ(session.eventCount, before.eventCount + 1);
    EXPECT_EQ(session.lastSeenAt, std::max(before.lastSeenAt, event.observedAt));
    EXPECT_GE(session.lastAppliedAt, before.lastAppliedAt);
    EXPECT_TRUE(before.origin != EventOrigin::live || session.origin == EventOrigin::live);
    EXPECT_TRUE(event.category == EventCategory::promptSubmitted ||
                session.promptCount == before.promptCount);

    const bool same = session.status == before.status && session.attention == before.attention &&
                      session.sessionEnded == before.sessionEnded;
    EXPECT_EQ(same, effect != EventEffect::applied);
    EXPECT_EQ(session.lastSignatureAt, effect == EventEffect::duplicate
                                           ? before.lastSignatureAt
                                           : std::optional{event.observedAt});
}

void expectSoundSession(const SessionSnapshot& session) {
    EXPECT_NE(session.status, SessionStatus::stale);
    EXPECT_EQ(session.attention.has_value(), session.status == SessionStatus::needsAttention);
    EXPECT_LE(session.lastAppliedAt, session.lastSeenAt);
    EXPECT_LE(session.statusSince, session.lastSeenAt);
    EXPECT_TRUE(!session.sessionEnded || session.endedAt);
    EXPECT_LE(session.promptCount, session.eventCount);
}

TEST(SessionReducerSequence, keepsEverySessionSound) {
    const unsigned seed = std::random_device{}();
    RecordProperty("seed", std::to_string(seed));
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomEvents events{seed};
    for (int sequence = 0; sequence < 200 && !HasFailure(); ++sequence) {
        std::optional<SessionSnapshot> session;
        for (int step = 0; step < 100 && !HasFailure(); ++step) {
            SCOPED_TRACE("sequence " + std::to_string(sequence) + ", step " + std::to_string(step));
            const AgentEvent event = events.next();
            const ReductionResult result = reducer.reduce(std::optional{session}, event);
            EXPECT_EQ(result.previous, session);
            EXPECT_EQ(result.effect == EventEffect::noSession, !event.sessionID);
            if (!event.sessionID) {
                EXPECT_EQ(result.current, session);
                continue;
            }
            ASSERT_TRUE(result.current);
            if (session)
                expectSuccessor(*session, *result.current, event, result.effect);
            else
                expectNewSession(*result.current, event);
            expectSoundSession(*result.current);
            session = SessionSnapshotCoding::decode(SessionSnapshotCoding::encode(*result.current))
                          .value();
            EXPECT_EQ(session, result.current) << "storing a session changes it";
        }
    }
}

}  // namespace
}  // namespace tallowbrook
