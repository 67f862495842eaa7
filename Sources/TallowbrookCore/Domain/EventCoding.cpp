#include "Domain/EventCoding.h"

namespace tallowbrook {

RecordEncoder EventCoding::makeEncoder() { return {}; }

std::expected<RecordDecoder, DecodingError> EventCoding::makeDecoder(std::string_view text) {
    return RecordDecoder::parse(text);
}

void EventCoding::encodeDetail(RecordEncoder& encoder, const EventDetail& detail) {
    encoder.encode("notificationType", detail.notificationType);
    encoder.encode("toolName", detail.toolName);
    encoder.encode("sessionSource", detail.sessionSource);
    encoder.encode("endReason", detail.endReason);
    encoder.encode("errorType", detail.errorType);
}

EventDetail EventCoding::decodeDetail(RecordDecoder& decoder) {
    return {
        .notificationType = decoder.optional("notificationType", &RecordDecoder::text),
        .toolName = decoder.optional("toolName", &RecordDecoder::text),
        .sessionSource = decoder.optional("sessionSource", &RecordDecoder::text),
        .endReason = decoder.optional("endReason", &RecordDecoder::text),
        .errorType = decoder.optional("errorType", &RecordDecoder::text),
    };
}

std::string EventCoding::encodeLine(const AgentEvent& event) {
    RecordEncoder detail = makeEncoder();
    encodeDetail(detail, event.detail);

    RecordEncoder encoder = makeEncoder();
    encoder.encode("schema", event.schema);
    encoder.encode("id", UUIDText::text(event.id));
    encoder.encode("provider", event.provider);
    encoder.encode("channel", event.channel);
    encoder.encode("origin", event.origin);
    encoder.encode("eventType", event.eventType);
    encoder.encode("category", event.category);
    encoder.encode("attention", event.attention);
    encoder.encode("sessionID", event.sessionID);
    encoder.encode("turnID", event.turnID);
    encoder.encode("observedAt", event.observedAt);
    encoder.encode("cwd", event.cwd);
    encoder.encode("tty", event.tty);
    encoder.encode("detail", detail);
    encoder.encode("adapterVersion", event.adapterVersion);
    return encoder.text() + "\n";
}

}  // namespace tallowbrook
