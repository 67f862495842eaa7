#include "EventIngestion/PayloadNormalizer.h"

#include <algorithm>

#include "EventIngestion/FieldSanitizer.h"

namespace tallowbrook {

Provider provider(PayloadSource source) { return AgentProfile::of(source).provider; }

EventChannel channel(PayloadSource source) { return agentSource(source).channel; }

std::string NormalizationError::diagnosticCode() const {
    struct Text {
        std::string operator()(const PayloadTooLarge& error) const {
            return "payload-too-large(" + std::to_string(error.byteCount) + ")";
        }
        std::string operator()(const EmptyPayload&) const { return "empty-payload"; }
        std::string operator()(const InvalidJSON&) const { return "invalid-json"; }
        std::string operator()(const NotAnObject&) const { return "not-an-object"; }
    };
    return std::visit(Text{}, reason);
}

namespace {

constexpr std::size_t maxIdentifierLength = 128;
constexpr std::size_t maxEventNameLength = 64;
constexpr std::size_t maxPathLength = 1024;

// Gives the event the meaning that its agent's row has for it.
void applyRule(const AgentEventRule& rule, const PayloadFields& fields, AgentEvent& event) {
    event.category = rule.category;
    event.attention = rule.attention;
    if (!rule.detail) return;
    auto& detail = event.detail.*(rule.detail->to);
    detail = FieldSanitizer::token(fields[rule.detail->from], rule.detail->maxLength);
    for (const auto& [text, attention] : rule.attentions) {
        if (detail != text) continue;
        event.category = EventCategory::attentionRequested;
        event.attention = attention;
    }
}

}  // namespace

AgentEvent PayloadNormalizer::makeEvent(const PayloadFields& fields, PayloadSource source,
                                        EventOrigin origin, Instant observedAt, const UUID& id) {
    AgentEvent event;
    event.id = id;
    event.provider = provider(source);
    event.channel = channel(source);
    event.origin = origin;
    event.eventType = "Unknown";
    event.observedAt = observedAt;
    event.adapterVersion = adapterVersion;
    const AgentSource& dialect = agentSource(source);
    event.sessionID = FieldSanitizer::identifier(fields[dialect.sessionID], maxIdentifierLength);
    if (dialect.turnID)
        event.turnID = FieldSanitizer::identifier(fields[*dialect.turnID], maxIdentifierLength);
    event.cwd = FieldSanitizer::path(fields[PayloadField::cwd], maxPathLength);

    const auto name = FieldSanitizer::token(fields[dialect.eventName], maxEventNameLength);
    if (!name) return event;
    event.eventType = *name;
    // A name without a rule is kept for the host, which may know more events than this helper.
    const auto rule = std::ranges::find(dialect.events, *name, &AgentEventRule::name);
    if (rule != dialect.events.end()) applyRule(*rule, fields, event);
    return event;
}

std::expected<AgentEvent, NormalizationError> PayloadNormalizer::normalize(std::string_view payload,
                                                                           PayloadSource source,
                                                                           EventOrigin origin,
                                                                           Instant observedAt,
                                                                           const UUID& id) {
    if (payload.empty()) return std::unexpected(NormalizationError::emptyPayload());
    // Before any parsing, so that no payload of whatever size keeps the agent waiting.
    if (payload.size() > maxPayloadBytes)
        return std::unexpected(NormalizationError::payloadTooLarge(payload.size()));
    const auto fields = readPayloadFields(payload);
    if (!fields && fields.error() == PayloadSyntaxError::notAnObject)
        return std::unexpected(NormalizationError::notAnObject());
    if (!fields) return std::unexpected(NormalizationError::invalidJSON());
    return makeEvent(*fields, source, origin, observedAt, id);
}

}  // namespace tallowbrook
