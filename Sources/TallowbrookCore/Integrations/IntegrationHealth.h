// Whether events of an agent really arrive after its hooks were set up.
//
// Plain values and pure functions of the times they are given; safe from any thread.
#pragma once

#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "Domain/Instant.h"
#include "Domain/RecordCoding.h"

namespace tallowbrook {

struct IntegrationHealth {
    struct Waiting {  // for the first event since this time, not for long yet
        Instant since;
        bool operator==(const Waiting&) const = default;
    };
    struct Silent {  // no event since this time, for longer than the grace period
        Instant since;
        bool operator==(const Silent&) const = default;
    };
    struct Receiving {
        Instant lastEventAt;
        bool operator==(const Receiving&) const = default;
    };
    struct NotApplicable {
        bool operator==(const NotApplicable&) const = default;
    };
    std::variant<Waiting, Silent, Receiving, NotApplicable> state = NotApplicable{};
    bool operator==(const IntegrationHealth&) const = default;

    static IntegrationHealth waiting(Instant since) { return {Waiting{since}}; }
    static IntegrationHealth silent(Instant since) { return {Silent{since}}; }
    static IntegrationHealth receiving(Instant lastEventAt) { return {Receiving{lastEventAt}}; }
    static IntegrationHealth notApplicable() { return {NotApplicable{}}; }

    // "no event since setup at 2025-03-01T14:30:05Z" and the like, with dates by ISO 8601; absent
    // where there is nothing to judge.
    std::optional<std::string> diagnosticDescription() const;
};

// What the host keeps for each agent.
struct IntegrationHealthRecord {
    std::optional<Instant> setUpAt;          // or first seen configured and ready
    std::optional<Instant> lastLiveEventAt;  // of the newest event of a real session
    bool operator==(const IntegrationHealthRecord&) const = default;

    void noteSetUp(Instant at);
    void noteLiveEvent(Instant at);  // an older or equal time changes nothing

    // Brings the record in line with what the host sees. `isConfigured`: the agent's file has our
    // hooks. `isReady`: configured, and the helper is in place. `storedLiveEvent`: the newest live
    // event in the store.
    void reconcile(bool isConfigured, bool isReady, std::optional<Instant> storedLiveEvent,
                   Instant now);

    // An event from before the latest setup does not count.
    IntegrationHealth health(bool isReady, Instant now, Seconds gracePeriod) const;
};

// JSON (RFC 8259) with the members "setUpAt" and "lastLiveEventAt", each left out while absent;
// dates in the event date format, which cuts below a millisecond.
namespace IntegrationHealthCoding {

std::string encode(const IntegrationHealthRecord& record);

// Fails when the text is no object, or a member is no date.
[[nodiscard]] std::expected<IntegrationHealthRecord, DecodingError> decode(std::string_view text);

}  // namespace IntegrationHealthCoding
}  // namespace tallowbrook
