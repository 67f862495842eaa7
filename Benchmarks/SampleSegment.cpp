#include "SampleSegment.h"

#include <array>

#include "Domain/EventCoding.h"

namespace tallowbrook::bench {
namespace {

struct Step {
    const char* eventType;
    EventCategory category;
    const char* toolName;
};

constexpr std::array steps{
    Step{"UserPromptSubmit", EventCategory::promptSubmitted, nullptr},
    Step{"PostToolUse", EventCategory::activity, "Read"},
    Step{"PostToolUse", EventCategory::activity, "Bash"},
    Step{"PostToolUse", EventCategory::activity, "Edit"},
    Step{"PermissionRequest", EventCategory::attentionRequested, "Bash"},
    Step{"PostToolUse", EventCategory::activity, "Bash"},
    Step{"PostToolUse", EventCategory::activity, "Grep"},
    Step{"Stop", EventCategory::turnCompleted, nullptr},
};

}  // namespace

std::vector<AgentEvent> sampleEvents(std::size_t count, std::size_t sessions) {
    using std::chrono::milliseconds;
    const Instant end = std::chrono::floor<milliseconds>(currentInstant());
    std::vector<AgentEvent> events(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t session = i % sessions;
        const Step& step = steps[i / sessions % steps.size()];
        AgentEvent& event = events[i];
        event.id = randomUUID().value();
        event.eventType = step.eventType;
        event.category = step.category;
        if (step.category == EventCategory::attentionRequested)
            event.attention = AttentionKind::permission;
        if (step.toolName != nullptr) event.detail.toolName = step.toolName;
        event.sessionID = "f5fb4509-99d7-4dd1-904d-" + std::to_string(100'000'000'000 + session);
        event.observedAt = end - milliseconds{count - i};
        event.cwd = "/Users/dev/Developer/project-" + std::to_string(session);
        event.tty = "ttys003";
        event.adapterVersion = "0.1.0";
    }
    return events;
}

std::string segmentText(const std::vector<AgentEvent>& events) {
    std::string text;
    for (const auto& event : events) text += EventCoding::encodeLine(event);
    return text;
}

}  // namespace tallowbrook::bench
