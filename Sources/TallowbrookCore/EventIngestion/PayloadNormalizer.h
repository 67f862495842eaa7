// Turns the payload that an agent hands to its hook into one event.
//
// Three dialects, one per source of `AgentProfile`, are mapped onto the shared vocabulary of
// `AgentEvent`; every value passes through `FieldSanitizer`. Pure functions; safe from any thread.
#pragma once

#include <cstddef>
#include <expected>
#include <string>
#include <string_view>
#include <variant>

#include "Domain/AgentEvent.h"
#include "Domain/AgentProfile.h"
#include "EventIngestion/PayloadFields.h"

namespace tallowbrook {

// The agent that sends payloads of this dialect, and the way by which they come.
Provider provider(PayloadSource source);
EventChannel channel(PayloadSource source);

struct NormalizationError {
    struct PayloadTooLarge {
        std::size_t byteCount = 0;
        bool operator==(const PayloadTooLarge&) const = default;
    };
    struct EmptyPayload {
        bool operator==(const EmptyPayload&) const = default;
    };
    struct InvalidJSON {
        bool operator==(const InvalidJSON&) const = default;
    };
    struct NotAnObject {
        bool operator==(const NotAnObject&) const = default;
    };
    std::variant<PayloadTooLarge, EmptyPayload, InvalidJSON, NotAnObject> reason;
    bool operator==(const NormalizationError&) const = default;

    static NormalizationError payloadTooLarge(std::size_t byteCount) {
        return {PayloadTooLarge{byteCount}};
    }
    static NormalizationError emptyPayload() { return {EmptyPayload{}}; }
    static NormalizationError invalidJSON() { return {InvalidJSON{}}; }
    static NormalizationError notAnObject() { return {NotAnObject{}}; }

    // "payload-too-large(1048577)", "empty-payload", "invalid-json" or "not-an-object"; never holds
    // text of the payload.
    std::string diagnosticCode() const;
};

namespace PayloadNormalizer {

inline constexpr std::string_view adapterVersion = "0.1.0";
inline constexpr std::size_t maxPayloadBytes = 1048576;

// `payload` is a JSON text in UTF-8. A bad member never fails the event: it is left absent. The
// event's `tty` is for the caller to fill.
std::expected<AgentEvent, NormalizationError> normalize(std::string_view payload,
                                                        PayloadSource source, EventOrigin origin,
                                                        Instant observedAt, const UUID& id);

// Makes the event of members that are parsed already.
AgentEvent makeEvent(const PayloadFields& fields, PayloadSource source, EventOrigin origin,
                     Instant observedAt, const UUID& id);

}  // namespace PayloadNormalizer
}  // namespace tallowbrook
