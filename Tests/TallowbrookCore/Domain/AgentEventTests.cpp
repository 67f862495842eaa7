#include "Domain/AgentEvent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string_view>
#include <vector>

#include "Support/SampleEvents.h"

namespace tallowbrook {
namespace {

using testing::ElementsAre;

// The raw texts of all cases, in the order of the cases; each leads back to its case.
template <typename Enum>
std::vector<std::string_view> rawValues() {
    std::vector<std::string_view> texts;
    for (const Enum value : allCases<Enum>()) {
        texts.push_back(rawValue(value));
        EXPECT_EQ(fromRawValue<Enum>(rawValue(value)), value) << rawValue(value);
        EXPECT_EQ(static_cast<std::size_t>(value) + 1, texts.size()) << rawValue(value);
    }
    return texts;
}

TEST(AgentEvent, everyEnumListsItsRawTextsInOrder) {
    EXPECT_THAT(rawValues<Provider>(), ElementsAre("claudeCode", "codexCLI"));
    EXPECT_THAT(rawValues<EventChannel>(), ElementsAre("hook", "notify"));
    EXPECT_THAT(rawValues<EventOrigin>(), ElementsAre("live", "test", "demo"));
    EXPECT_THAT(rawValues<AttentionKind>(), ElementsAre("permission", "input"));
    EXPECT_THAT(rawValues<EventCategory>(),
                ElementsAre("sessionStarted", "promptSubmitted", "attentionRequested", "activity",
                            "turnCompleted", "turnFailed", "turnInterrupted", "sessionEnded",
                            "informational", "unrecognized"));
}

TEST(AgentEvent, rawTextsAreMatchedExactly) {
    EXPECT_FALSE(fromRawValue<Provider>("ClaudeCode"));
    EXPECT_FALSE(fromRawValue<Provider>("claudeCode "));
    EXPECT_FALSE(fromRawValue<Provider>("claude"));
    EXPECT_FALSE(fromRawValue<EventOrigin>(""));
    EXPECT_FALSE(fromRawValue<EventCategory>("turnPaused"));
    EXPECT_FALSE(fromRawValue<AttentionKind>((std::string_view{"input\0", 6})));
}

TEST(AgentEvent, providersHaveNamesForTheUser) {
    EXPECT_EQ(displayName(Provider::claudeCode), "Claude Code");
    EXPECT_EQ(displayName(Provider::codexCLI), "Codex CLI");
}

TEST(AgentEvent, writersPutSchemaOne) {
    EXPECT_EQ(AgentEvent::currentSchema, 1);
    EXPECT_EQ(AgentEvent{}.schema, 1);
}

TEST(AgentEvent, equalityLooksAtEveryField) {
    const std::vector<std::function<void(AgentEvent&)>> changes{
        [](AgentEvent& event) { event.schema = 2; },
        [](AgentEvent& event) { event.id = sampleID("00000000-0000-4000-8000-000000000000"); },
        [](AgentEvent& event) { event.provider = Provider::claudeCode; },
        [](AgentEvent& event) { event.channel = EventChannel::hook; },
        [](AgentEvent& event) { event.origin = EventOrigin::test; },
        [](AgentEvent& event) { event.eventType = "permissionRequest"; },
        [](AgentEvent& event) { event.category = EventCategory::informational; },
        [](AgentEvent& event) { event.attention = AttentionKind::input; },
        [](AgentEvent& event) { event.sessionID.reset(); },
        [](AgentEvent& event) { event.turnID = ""; },
        [](AgentEvent& event) { event.observedAt += std::chrono::microseconds{1}; },
        [](AgentEvent& event) { event.cwd = "/Users/x/proj/"; },
        [](AgentEvent& event) { event.tty.reset(); },
        [](AgentEvent& event) { event.detail.notificationType.reset(); },
        [](AgentEvent& event) { event.detail.toolName = "bash"; },
        [](AgentEvent& event) { event.detail.sessionSource.reset(); },
        [](AgentEvent& event) { event.detail.endReason.reset(); },
        [](AgentEvent& event) { event.detail.errorType.reset(); },
        [](AgentEvent& event) { event.adapterVersion = "0.1.1"; },
    };
    EXPECT_EQ(fullEvent(), fullEvent());
    for (std::size_t i = 0; i < changes.size(); ++i) {
        AgentEvent changed = fullEvent();
        changes[i](changed);
        EXPECT_NE(changed, fullEvent()) << "change " << i;
    }
}

TEST(AgentEvent, textsAreComparedByTheirExactCodePoints) {
    AgentEvent composed = fullEvent();
    composed.cwd = "/caf\u00E9";
    AgentEvent decomposed = fullEvent();
    decomposed.cwd = "/cafe\u0301";
    EXPECT_NE(composed, decomposed);
}

}  // namespace
}  // namespace tallowbrook
