#include "Watch/Interpretation.h"

#include <gtest/gtest.h>

#include "DatabaseAtHome.h"
#include "Preferences/HostSettings.h"
#include "Support/SampleSnapshots.h"
#include "Watch/Ingest.h"

namespace tallowbrook::host {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;

AgentEvent asking(const std::string& tool) {
    AgentEvent event = numberedEvent(1);
    event.eventType = "PermissionRequest";
    event.category = EventCategory::attentionRequested;
    event.attention = AttentionKind::permission;
    event.detail.toolName = tool;
    return event;
}

AgentEvent dialogReminder() {
    AgentEvent event = asking("");
    event.id = numberedID(2);
    event.eventType = "Notification";
    event.detail.toolName.reset();
    event.detail.notificationType = "permission_prompt";
    event.observedAt += seconds{6};
    return event;
}

// What a host tells of these events, stored one after the other, and the session afterwards.
struct Interpreting : testing::Test {
    DatabaseAtHome home;
    Database database = home.open();

    void store(const std::vector<AgentEvent>& events) {
        EventSource source{[&]() -> EventClaim {
            return {.batches = {EventBatch{
                        .name = "batch",
                        .forEachEvent = [&](const SpoolDrainer::EventSink& take)
                            -> std::expected<std::int64_t, FileError> {
                            for (auto event : events) take(std::move(event), "{}");
                            return 0;
                        },
                        .remove = [] {},
                    }},
                    .troubles = {}};
        }};
        const Ingest ingest{defaultPreferences(), Calendar::fixed(minutes{0}), lines};
        EXPECT_TRUE(ingest.run(source, database, sampleTime + minutes{1}).troubles.empty());
    }

    std::vector<std::string> told() {
        std::vector<std::string> texts;
        for (const auto& delivery : Outbox{database}.pending("lines"))
            texts.push_back(delivery.notification.content.title + ": " +
                            delivery.notification.content.body);
        return texts;
    }

    SessionSnapshot session() { return SessionStore{database}.sessions().at(0); }
};

using Texts = std::vector<std::string>;

TEST_F(Interpreting, aQuestionIsAQuestionAndNoPermission) {
    store({asking("AskUserQuestion")});
    EXPECT_EQ(told(),
              Texts{"Claude Code has a question: proj \xE2\x80\x94 waiting for your answer."});
    EXPECT_EQ(session().attention, AttentionKind::input);
}

TEST_F(Interpreting, aPlanIsToBeApproved) {
    store({asking("ExitPlanMode")});
    EXPECT_EQ(told(), Texts{"Claude Code asks you to approve its plan: proj \xE2\x80\x94 waiting "
                            "for your answer."});
}

TEST_F(Interpreting, aPermissionIsStillAPermission) {
    store({asking("Bash"), dialogReminder()});
    EXPECT_EQ(told(), Texts{"Claude Code needs permission: proj \xE2\x80\x94 waiting for approval "
                            "to use Bash."});
    EXPECT_EQ(session().attention, AttentionKind::permission);
}

TEST_F(Interpreting, theReminderOfAnOpenQuestionIsNoPermissionEither) {
    store({asking("AskUserQuestion"), dialogReminder()});
    EXPECT_EQ(told().size(), 1U);
    EXPECT_EQ(session().attention, AttentionKind::input);
    EXPECT_EQ(session().statusDetail.toolName, "AskUserQuestion");
}

TEST_F(Interpreting, aPermissionWhileAQuestionIsOpenIsTold) {
    auto permission = asking("Bash");
    permission.id = numberedID(3);
    permission.observedAt += seconds{10};
    store({asking("AskUserQuestion"), permission});
    EXPECT_EQ(session().attention, AttentionKind::permission);
}

TEST_F(Interpreting, aSessionKeepsTheDirectoryInWhichItBegan) {
    auto elsewhere = numberedEvent(2);
    elsewhere.cwd = "/tmp";
    elsewhere.observedAt += seconds{1};
    store({numberedEvent(1), elsewhere});
    EXPECT_EQ(session().cwd, "/Users/x/proj");

    auto begunAgain = numberedEvent(3);
    begunAgain.eventType = "SessionStart";
    begunAgain.category = EventCategory::sessionStarted;
    begunAgain.cwd = "/Users/x/moved";
    begunAgain.observedAt += seconds{2};
    store({begunAgain});
    EXPECT_EQ(session().cwd, "/Users/x/moved");
}

TEST_F(Interpreting, leavesTheEventsRecordAsItIs) {
    auto elsewhere = numberedEvent(2);
    elsewhere.cwd = "/tmp";
    const std::optional<SessionSnapshot> stored = [] {
        auto session = minimalSnapshot();
        session.cwd = "/Users/x/proj";
        return session;
    }();
    const auto meant = interpreted(elsewhere, stored);
    ASSERT_TRUE(meant);
    EXPECT_EQ(meant->cwd, "/Users/x/proj");
    EXPECT_EQ(elsewhere.cwd, "/tmp");
    EXPECT_FALSE(interpreted(numberedEvent(1), stored)) << "it means what it says";
}

}  // namespace
}  // namespace tallowbrook::host
