// Threads of an agent's own, which its notify program alone reports.
#include "Storing.h"

namespace tallowbrook::host {
namespace {

struct UnseenThreads : Storing {
    AgentEvent hook(double second, const std::string& session) {
        auto made = prompt(second, session);
        made.provider = Provider::codexCLI;
        return made;
    }
    AgentEvent notify(double second, const std::string& session) {
        auto made = event("agent-turn-complete", EventCategory::turnCompleted, second, session);
        made.provider = Provider::codexCLI;
        made.channel = EventChannel::notify;
        return made;
    }
};

TEST_F(UnseenThreads, makeNoSessionWhereHooksAreAtWork) {
    store({hook(0, "seen"), notify(2, "hidden")});
    EXPECT_EQ(home.rows("sessions"), 1);
    EXPECT_EQ(told(), Texts{});
    EXPECT_EQ(home.rows("events"), 2) << "it stays on record";

    // Known from before, by another batch.
    store({notify(60, "hidden")});
    EXPECT_EQ(home.rows("sessions"), 1);
    EXPECT_EQ(home.text("SELECT effect FROM events ORDER BY number DESC"), "noSession");
}

TEST_F(UnseenThreads, areNoneWhereNoHookWasEverHeard) {
    store({notify(2, "seen")});
    EXPECT_EQ(home.rows("sessions"), 1);
    EXPECT_EQ(told(), Texts{"Codex CLI finished: proj \xE2\x80\x94 turn completed."});
}

TEST_F(UnseenThreads, areNoneLongAfterTheLastHook) {
    store({hook(0, "seen")});
    auto late = notify(0, "other");
    late.observedAt -= std::chrono::minutes{61};
    store({late});
    EXPECT_EQ(home.rows("sessions"), 2);
}

TEST_F(UnseenThreads, areNoneOfTheSessionsThatTheHooksHaveReported) {
    store({hook(0, "seen"), notify(30, "seen")});
    EXPECT_EQ(told(), Texts{"Codex CLI finished: proj \xE2\x80\x94 turn completed."});
}

TEST_F(UnseenThreads, areNotToldByTheHooksOfAnotherAgentOrOfATrial) {
    auto trial = hook(0, "trial");
    trial.origin = EventOrigin::test;
    store({prompt(0, "claude"), trial, notify(2, "seen")});
    EXPECT_EQ(home.rows("sessions"), 3);
}

}  // namespace
}  // namespace tallowbrook::host
