#include "SessionState/DemoData.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "EventIngestion/PayloadNormalizer.h"

namespace tallowbrook {

namespace {

constexpr Seconds duplicateWindow{2};
constexpr std::string_view projectsDirectory = "/Users/demo/Developer/";

struct Member {
    PayloadField field;
    std::string_view text;
};

// One call of an agent's hook.
struct Step {
    Seconds beforeNow;
    std::string_view eventName;
    std::vector<Member> members;
};

struct Sample {
    PayloadSource source;
    std::string_view sessionID;
    std::string_view project;
    std::vector<Step> steps;
};

constexpr Member tool(std::string_view name) { return {PayloadField::toolName, name}; }
constexpr Member turn(std::string_view id) { return {PayloadField::turnID, id}; }

constexpr std::string_view iosTurn = "0199e8a3-0c5d-7f21-8b4e-5a6c7d8e9f01";
constexpr std::string_view pipelineTurn = "0199e891-2d4e-7b13-9f6a-0c1d2e3f4a5b";
constexpr std::string_view billingTurn = "0199e86d-9a3b-7e42-a5c6-2e4f6a8b0c1d";

std::vector<Sample> samples(Seconds staleAfter) {
    return {
        {PayloadSource::claudeCodeHook,
         "4b0f6a1e-8c2d-4f3a-9b5e-1d7c2a9e6f30",
         "checkout-api",
         {
             {Seconds{1620}, "SessionStart", {{PayloadField::source, "startup"}}},
             {Seconds{1560}, "UserPromptSubmit", {}},
             {Seconds{1500}, "PostToolUse", {tool("Read")}},
             {Seconds{1320}, "PostToolUse", {tool("Edit")}},
             {Seconds{1140}, "Stop", {}},
             {Seconds{420}, "UserPromptSubmit", {}},
             {Seconds{360}, "PostToolUse", {tool("Grep")}},
             {Seconds{240}, "PermissionRequest", {tool("Bash")}},
         }},
        {PayloadSource::claudeCodeHook,
         "9e2d7c41-3a5b-4e8f-a1c6-7b0d5e2f8a14",
         "design-system",
         {
             {Seconds{540}, "SessionStart", {}},
             {Seconds{510}, "UserPromptSubmit", {}},
             {Seconds{420}, "PostToolUse", {tool("Read")}},
             {Seconds{90}, "PermissionRequest", {tool("Write")}},
         }},
        {PayloadSource::claudeCodeHook,
         "a71c3e52-6d4f-4b2a-8e9c-0f5b1d3a7c68",
         "marketing-site",
         {
             {Seconds{840}, "SessionStart", {}},
             {Seconds{780}, "UserPromptSubmit", {}},
             {Seconds{720}, "PostToolUse", {tool("Read")}},
             {Seconds{600}, "PermissionRequest", {tool("Write")}},
             {Seconds{480}, "PostToolUse", {tool("Write")}},
             {Seconds{40}, "PostToolUse", {tool("Bash")}},
         }},
        {PayloadSource::codexHook,
         "0199e8a2-41c7-7d35-9a6e-3f1b8c2d5e70",
         "ios-app",
         {
             {Seconds{360}, "SessionStart", {}},
             {Seconds{300}, "UserPromptSubmit", {turn(iosTurn)}},
             {Seconds{180}, "PostToolUse", {tool("Bash"), turn(iosTurn)}},
             {Seconds{50}, "PostToolUse", {tool("Bash"), turn(iosTurn)}},
         }},
        {PayloadSource::claudeCodeHook,
         "2c8e5b17-f3a9-4d6c-b0e2-8a4f7c1d9e53",
         "docs-site",
         {
             {Seconds{1020}, "SessionStart", {}},
             {Seconds{960}, "UserPromptSubmit", {}},
             {Seconds{900}, "PostToolUse", {tool("WebFetch")}},
             {Seconds{780}, "StopFailure", {{PayloadField::error, "rate_limit"}}},
         }},
        // Silent for longer than the threshold, so that a stale session is among the others.
        {PayloadSource::claudeCodeHook,
         "e5a94d28-1b7c-4f0e-9d3a-6c2b8e5f1a07",
         "infra",
         {
             {staleAfter + Seconds{720}, "SessionStart", {}},
             {staleAfter + Seconds{660}, "UserPromptSubmit", {}},
             {staleAfter + Seconds{540}, "PostToolUse", {tool("Bash")}},
         }},
        {PayloadSource::codexHook,
         "0199e891-0b3f-7a42-8c5d-6e2f9a1b4c83",
         "data-pipeline",
         {
             {Seconds{3000}, "SessionStart", {}},
             {Seconds{2940}, "UserPromptSubmit", {turn(pipelineTurn)}},
             {Seconds{2760}, "PostToolUse", {tool("Bash"), turn(pipelineTurn)}},
             {Seconds{2460}, "PostToolUse", {tool("Bash"), turn(pipelineTurn)}},
             {Seconds{2280}, "Stop", {turn(pipelineTurn)}},
         }},
        {PayloadSource::codexHook,
         "0199e86d-7e15-7c08-b4a9-1d3e5f7a2b96",
         "billing-service",
         {
             {Seconds{6000}, "SessionStart", {}},
             {Seconds{5940}, "UserPromptSubmit", {turn(billingTurn)}},
             {Seconds{5700}, "PostToolUse", {tool("Bash"), turn(billingTurn)}},
             {Seconds{5400}, "Stop", {turn(billingTurn)}},
             {Seconds{5280}, "SessionEnd", {{PayloadField::reason, "other"}}},
         }},
    };
}

AgentEvent makeEvent(const Sample& sample, const Step& step, Instant now) {
    PayloadFields fields;
    // As if parsed from a payload, so that a change of the mapping shows here too.
    fields[PayloadField::hookEventName] = step.eventName;
    fields[PayloadField::sessionID] = sample.sessionID;
    fields[PayloadField::cwd] = std::string{projectsDirectory}.append(sample.project);
    for (const auto& [field, text] : step.members) fields[field] = text;
    const Instant observedAt = now - std::chrono::round<Instant::duration>(step.beforeNow);
    return PayloadNormalizer::makeEvent(fields, sample.source, EventOrigin::demo, observedAt,
                                        randomUUID().value_or(UUID{}));
}

// Oldest first; a multimap keeps events of one instant in the order in which they came.
std::multimap<Instant, AgentEvent> timeline(Instant now, Seconds staleAfter) {
    std::multimap<Instant, AgentEvent> events;
    for (const Sample& sample : samples(staleAfter)) {
        for (const Step& step : sample.steps) {
            AgentEvent event = makeEvent(sample, step, now);
            events.emplace(event.observedAt, std::move(event));
        }
    }
    return events;
}

}  // namespace

DemoData DemoData::make(Instant now, Seconds staleAfter) {
    const SessionReducer reducer{.duplicateWindow = duplicateWindow};
    std::map<std::string, std::optional<SessionSnapshot>> stored;
    DemoData data;
    for (auto& [observedAt, event] : timeline(now, staleAfter)) {
        const SessionKey key{event.provider, event.sessionID.value_or("")};
        auto& session = stored[key.storageID()];
        ReductionResult result = reducer.reduce(std::move(session), event);
        session = std::move(result.current);
        data.entries.push_back({.event = std::move(event),
                                .effect = result.effect,
                                .statusAfter = session ? session->status : SessionStatus::unknown});
    }

    for (auto& [storageID, session] : stored)
        if (session) data.sessions.push_back(std::move(*session));
    // The id settles ties, so that two calls list alike.
    std::ranges::sort(data.sessions, std::ranges::greater{}, [](const SessionSnapshot& session) {
        return std::pair{session.lastSeenAt, session.id()};
    });
    return data;
}

}  // namespace tallowbrook
