#include "SessionState/DemoData.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>

#include "EventIngestion/PayloadNormalizer.h"
#include "Support/SampleSnapshots.h"

namespace tallowbrook {
namespace {

using testing::ElementsAre;

constexpr Seconds staleAfter{900};

DemoData demo(Seconds threshold = staleAfter) { return DemoData::make(sampleTime, threshold); }

SessionSnapshot sessionOf(const std::string& project, const DemoData& data) {
    const auto found =
        std::ranges::find(data.sessions, project, [](const auto& s) { return s.projectLabel(); });
    if (found != data.sessions.end()) return *found;
    ADD_FAILURE() << "no session of " << project;
    return {};
}

std::string projectOf(const AgentEvent& event) {
    return std::filesystem::path{event.cwd.value_or("")}.filename().string();
}

long long secondsBeforeNow(const AgentEvent& event) {
    return std::chrono::duration_cast<std::chrono::seconds>(sampleTime - event.observedAt).count();
}

// "300 UserPromptSubmit turn T1: applied, working"
std::string described(const DemoData::Entry& entry) {
    const auto& [event, effect, statusAfter] = entry;
    std::string text = std::to_string(secondsBeforeNow(event)) + " " + event.eventType;
    const auto add = [&](const std::optional<std::string>& detail) {
        if (detail) text += " " + *detail;
    };
    add(event.detail.sessionSource);
    add(event.detail.toolName);
    add(event.detail.errorType);
    add(event.detail.endReason);
    add(event.detail.notificationType);
    if (event.turnID) text += " turn " + *event.turnID;
    return text + ": " + std::string{rawValue(effect)} + ", " + std::string{rawValue(statusAfter)};
}

std::vector<std::string> storyOf(const std::string& project) {
    std::vector<std::string> story;
    for (const auto& entry : demo().entries)
        if (projectOf(entry.event) == project) story.push_back(described(entry));
    return story;
}

TEST(DemoData, tellsEightStories) {
    const std::string t1 = " turn 0199e8a3-0c5d-7f21-8b4e-5a6c7d8e9f01: ";
    const std::string t2 = " turn 0199e891-2d4e-7b13-9f6a-0c1d2e3f4a5b: ";
    const std::string t3 = " turn 0199e86d-9a3b-7e42-a5c6-2e4f6a8b0c1d: ";
    EXPECT_THAT(
        storyOf("checkout-api"),
        ElementsAre(
            "1620 SessionStart startup: applied, unknown",
            "1560 UserPromptSubmit: applied, working", "1500 PostToolUse Read: confirmed, working",
            "1320 PostToolUse Edit: confirmed, working", "1140 Stop: applied, completed",
            "420 UserPromptSubmit: applied, working", "360 PostToolUse Grep: confirmed, working",
            "240 PermissionRequest Bash: applied, needsAttention"));
    EXPECT_THAT(
        storyOf("design-system"),
        ElementsAre("540 SessionStart: applied, unknown", "510 UserPromptSubmit: applied, working",
                    "420 PostToolUse Read: confirmed, working",
                    "90 PermissionRequest Write: applied, needsAttention"));
    EXPECT_THAT(
        storyOf("marketing-site"),
        ElementsAre("840 SessionStart: applied, unknown", "780 UserPromptSubmit: applied, working",
                    "720 PostToolUse Read: confirmed, working",
                    "600 PermissionRequest Write: applied, needsAttention",
                    "480 PostToolUse Write: applied, working",
                    "40 PostToolUse Bash: confirmed, working"));
    EXPECT_THAT(storyOf("ios-app"), ElementsAre("360 SessionStart: applied, unknown",
                                                "300 UserPromptSubmit" + t1 + "applied, working",
                                                "180 PostToolUse Bash" + t1 + "confirmed, working",
                                                "50 PostToolUse Bash" + t1 + "confirmed, working"));
    EXPECT_THAT(storyOf("docs-site"), ElementsAre("1020 SessionStart: applied, unknown",
                                                  "960 UserPromptSubmit: applied, working",
                                                  "900 PostToolUse WebFetch: confirmed, working",
                                                  "780 StopFailure rate_limit: applied, failed"));
    EXPECT_THAT(storyOf("infra"), ElementsAre("1620 SessionStart: applied, unknown",
                                              "1560 UserPromptSubmit: applied, working",
                                              "1440 PostToolUse Bash: confirmed, working"));
    EXPECT_THAT(storyOf("data-pipeline"),
                ElementsAre("3000 SessionStart: applied, unknown",
                            "2940 UserPromptSubmit" + t2 + "applied, working",
                            "2760 PostToolUse Bash" + t2 + "confirmed, working",
                            "2460 PostToolUse Bash" + t2 + "confirmed, working",
                            "2280 Stop" + t2 + "applied, completed"));
    EXPECT_THAT(storyOf("billing-service"),
                ElementsAre("6000 SessionStart: applied, unknown",
                            "5940 UserPromptSubmit" + t3 + "applied, working",
                            "5700 PostToolUse Bash" + t3 + "confirmed, working",
                            "5400 Stop" + t3 + "applied, completed",
                            "5280 SessionEnd other: applied, completed"));
}

TEST(DemoData, listsTheSessionHeardOfLastFirst) {
    std::vector<std::string> listed;
    for (const auto& session : demo().sessions)
        listed.push_back(std::string{rawValue(session.key.provider)} + " " +
                         session.projectLabel() + " " + session.key.sessionID);
    EXPECT_THAT(listed,
                ElementsAre("claudeCode marketing-site a71c3e52-6d4f-4b2a-8e9c-0f5b1d3a7c68",
                            "codexCLI ios-app 0199e8a2-41c7-7d35-9a6e-3f1b8c2d5e70",
                            "claudeCode design-system 9e2d7c41-3a5b-4e8f-a1c6-7b0d5e2f8a14",
                            "claudeCode checkout-api 4b0f6a1e-8c2d-4f3a-9b5e-1d7c2a9e6f30",
                            "claudeCode docs-site 2c8e5b17-f3a9-4d6c-b0e2-8a4f7c1d9e53",
                            "claudeCode infra e5a94d28-1b7c-4f0e-9d3a-6c2b8e5f1a07",
                            "codexCLI data-pipeline 0199e891-0b3f-7a42-8c5d-6e2f9a1b4c83",
                            "codexCLI billing-service 0199e86d-7e15-7c08-b4a9-1d3e5f7a2b96"));
}

TEST(DemoData, keepsTheOrderOfTheSamplesForEventsOfOneInstant) {
    std::vector<std::string> together;
    for (const auto& entry : demo(Seconds{60}).entries)
        if (secondsBeforeNow(entry.event) == 780) together.push_back(projectOf(entry.event));
    EXPECT_THAT(together, ElementsAre("marketing-site", "docs-site", "infra"));
}

TEST(DemoData, alwaysShowsTheSilentSessionAsStale) {
    for (const double threshold : {0.0, 0.5, 30.0, 900.0, 86400.0, 3.2e9}) {
        const auto session = sessionOf("infra", demo(Seconds{threshold}));
        EXPECT_EQ(session.status, SessionStatus::working) << threshold;
        EXPECT_EQ(session.displayStatus(sampleTime, Seconds{threshold}), SessionStatus::stale)
            << threshold;
    }
    for (const auto& session : demo().sessions)
        EXPECT_EQ(session.displayStatus(sampleTime, staleAfter) == SessionStatus::stale,
                  session.projectLabel() == "infra")
            << session.projectLabel();
}

TEST(DemoData, makesTheEventsThatRealPayloadsWouldGive) {
    const auto data = demo();
    const auto payloadGives = [&](const char* payload, PayloadSource source, double seconds) {
        const auto found = std::ranges::find(data.entries, after(-seconds), [](const auto& entry) {
            return entry.event.observedAt;
        });
        ASSERT_NE(found, data.entries.end());
        EXPECT_EQ(found->event, PayloadNormalizer::normalize(payload, source, EventOrigin::demo,
                                                             after(-seconds), found->event.id)
                                    .value());
    };
    payloadGives(
        R"({"session_id":"4b0f6a1e-8c2d-4f3a-9b5e-1d7c2a9e6f30","cwd":"/Users/demo/Developer/)"
        R"(checkout-api","hook_event_name":"PermissionRequest","tool_name":"Bash"})",
        PayloadSource::claudeCodeHook, 240);
    payloadGives(
        R"({"session_id":"0199e8a2-41c7-7d35-9a6e-3f1b8c2d5e70","cwd":"/Users/demo/Developer/)"
        R"(ios-app","turn_id":"0199e8a3-0c5d-7f21-8b4e-5a6c7d8e9f01",)"
        R"("hook_event_name":"PostToolUse","tool_name":"Bash"})",
        PayloadSource::codexHook, 50);
}

TEST(DemoData, endsWithTheSnapshotsThatItsEventsReduceTo) {
    const SessionReducer reducer{.duplicateWindow = Seconds{2}};
    const auto data = demo();
    EXPECT_TRUE(std::ranges::is_sorted(
        data.entries, {}, [](const DemoData::Entry& entry) { return entry.event.observedAt; }));
    for (const SessionSnapshot& session : data.sessions) {
        EXPECT_EQ(session.origin, EventOrigin::demo);
        std::optional<SessionSnapshot> folded;
        for (const auto& [event, effect, statusAfter] : data.entries)
            if (event.sessionID == session.key.sessionID) {
                const auto result = reducer.reduce(std::optional{folded}, event);
                EXPECT_EQ(result.effect, effect);
                EXPECT_EQ(result.current->status, statusAfter);
                folded = result.current;
            }
        EXPECT_EQ(folded, session);
    }
}

TEST(DemoData, givesEachEventAnIdOfItsOwn) {
    std::set<UUID> ids;
    for (int round = 0; round < 2; ++round)
        for (const auto& entry : demo().entries) ids.insert(entry.event.id);
    EXPECT_EQ(ids.size(), 2 * 39U);
    EXPECT_FALSE(ids.contains(UUID{}));
}

}  // namespace
}  // namespace tallowbrook
