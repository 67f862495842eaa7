// A store into which a test puts events, one batch at a time, and what is to be told of them.
#pragma once

#include <gtest/gtest.h>

#include "DatabaseAtHome.h"
#include "Preferences/HostSettings.h"
#include "Watch/Ingest.h"

namespace tallowbrook::host {

struct Storing : testing::Test {
    DatabaseAtHome home;
    Database database = home.open();
    NotificationPreferences preferences = defaultPreferences();

    // An event of a session, so many seconds after the sample time; no two have the same id.
    AgentEvent event(const std::string& name, EventCategory category, double second,
                     const std::string& session = "S1") {
        AgentEvent made = numberedEvent(++lastNumber_);
        made.sessionID = session;
        made.eventType = name;
        made.category = category;
        if (category == EventCategory::attentionRequested)
            made.attention = AttentionKind::permission;
        made.observedAt += std::chrono::milliseconds{static_cast<int>(second * 1000)};
        return made;
    }
    AgentEvent prompt(double second, const std::string& session = "S1") {
        return event("UserPromptSubmit", EventCategory::promptSubmitted, second, session);
    }
    AgentEvent request(double second, const std::string& session = "S1") {
        return event("PermissionRequest", EventCategory::attentionRequested, second, session);
    }
    AgentEvent activity(double second) {
        return event("PostToolUse", EventCategory::activity, second);
    }
    AgentEvent stop(double second, const std::string& session = "S1") {
        return event("Stop", EventCategory::turnCompleted, second, session);
    }
    AgentEvent failure(double second) {
        auto made = event("StopFailure", EventCategory::turnFailed, second);
        made.detail.errorType = "server_error";
        return made;
    }
    AgentEvent sessionEnd(double second, const std::string& reason = "other") {
        auto made = event("SessionEnd", EventCategory::sessionEnded, second);
        made.detail.endReason = reason;
        return made;
    }

    void store(const std::vector<AgentEvent>& events) {
        const EventSource source{[&]() -> EventClaim {
            return {.batches = {EventBatch{
                        .name = "batch",
                        .forEachEvent = [&](const SpoolDrainer::EventSink& take)
                            -> std::expected<std::int64_t, FileError> {
                            for (auto each : events) take(std::move(each), "{}");
                            return 0;
                        },
                        .remove = [] {},
                    }},
                    .troubles = {}};
        }};
        const Ingest ingest{preferences, Calendar::fixed(std::chrono::minutes{0}), lines};
        EXPECT_TRUE(
            ingest.run(source, database, sampleTime + std::chrono::minutes{5}).troubles.empty());
    }

    // "title: body" of each that is still to be told.
    std::vector<std::string> told() {
        std::vector<std::string> texts;
        for (const auto& delivery : Outbox{database}.pending("lines"))
            texts.push_back(delivery.notification.content.title + ": " +
                            delivery.notification.content.body);
        return texts;
    }

    // Why nothing is told of each event of S1 of which nothing is.
    std::vector<std::string> untold() {
        std::vector<std::string> words;
        for (const auto& one : Outbox{database}.untold("claudeCode|S1"))
            words.push_back(one.words());
        return words;
    }

    SessionSnapshot session(const std::string& id = "S1") {
        const auto stored = SessionStore{database}.session({Provider::claudeCode, id});
        return stored && stored->snapshot ? *stored->snapshot : SessionSnapshot{};
    }

 private:
    std::uint8_t lastNumber_ = 0;
};

using Texts = std::vector<std::string>;

}  // namespace tallowbrook::host
