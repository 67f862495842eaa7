#include "SessionState/SessionSnapshotCoding.h"

#include "Domain/EventCoding.h"

namespace tallowbrook {

namespace {

RecordEncoder encodedKey(const SessionKey& key) {
    RecordEncoder encoder = EventCoding::makeEncoder();
    encoder.encode("provider", key.provider);
    encoder.encode("sessionID", key.sessionID);
    return encoder;
}

RecordEncoder encodedDetail(const EventDetail& detail) {
    RecordEncoder encoder = EventCoding::makeEncoder();
    EventCoding::encodeDetail(encoder, detail);
    return encoder;
}

SessionKey decodeKey(RecordDecoder& outer) {
    RecordDecoder decoder = outer.record("key");
    SessionKey key{
        .provider = decoder.enumeration<Provider>("provider"),
        .sessionID = decoder.text("sessionID"),
    };
    outer.adopt(decoder);
    return key;
}

EventDetail decodeStatusDetail(RecordDecoder& outer) {
    RecordDecoder decoder = outer.record("statusDetail");
    EventDetail detail = EventCoding::decodeDetail(decoder);
    outer.adopt(decoder);
    return detail;
}

}  // namespace

std::string SessionSnapshotCoding::encode(const SessionSnapshot& snapshot) {
    RecordEncoder encoder = EventCoding::makeEncoder();
    encoder.encode("key", encodedKey(snapshot.key));
    encoder.encode("origin", snapshot.origin);
    encoder.encode("status", snapshot.status);
    encoder.encode("attention", snapshot.attention);
    encoder.encode("statusEventType", snapshot.statusEventType);
    encoder.encode("statusCategory", snapshot.statusCategory);
    encoder.encode("statusDetail", encodedDetail(snapshot.statusDetail));
    encoder.encode("statusSince", snapshot.statusSince);
    encoder.encode("firstSeenAt", snapshot.firstSeenAt);
    encoder.encode("lastSeenAt", snapshot.lastSeenAt);
    encoder.encode("lastAppliedAt", snapshot.lastAppliedAt);
    encoder.encode("lastEventType", snapshot.lastEventType);
    encoder.encode("cwd", snapshot.cwd);
    encoder.encode("tty", snapshot.tty);
    encoder.encode("sessionEnded", snapshot.sessionEnded);
    encoder.encode("endedAt", snapshot.endedAt);
    encoder.encode("endReason", snapshot.endReason);
    encoder.encode("promptCount", snapshot.promptCount);
    encoder.encode("lastCompletedTurnID", snapshot.lastCompletedTurnID);
    encoder.encode("lastSignature", snapshot.lastSignature);
    encoder.encode("lastSignatureAt", snapshot.lastSignatureAt);
    encoder.encode("eventCount", snapshot.eventCount);
    return encoder.text();
}

std::expected<SessionSnapshot, DecodingError> SessionSnapshotCoding::decode(std::string_view text) {
    auto parsed = EventCoding::makeDecoder(text);
    if (!parsed) return std::unexpected(parsed.error());
    RecordDecoder& decoder = *parsed;
    SessionSnapshot snapshot{
        .key = decodeKey(decoder),
        .origin = decoder.enumeration<EventOrigin>("origin"),
        .status = decoder.enumeration<SessionStatus>("status"),
        .attention = decoder.optional("attention", &RecordDecoder::enumeration<AttentionKind>),
        .statusEventType = decoder.text("statusEventType"),
        .statusCategory = decoder.enumeration<EventCategory>("statusCategory"),
        .statusDetail = decodeStatusDetail(decoder),
        .statusSince = decoder.date("statusSince"),
        .firstSeenAt = decoder.date("firstSeenAt"),
        .lastSeenAt = decoder.date("lastSeenAt"),
        .lastAppliedAt = decoder.date("lastAppliedAt"),
        .lastEventType = decoder.text("lastEventType"),
        .cwd = decoder.optional("cwd", &RecordDecoder::text),
        .tty = decoder.optional("tty", &RecordDecoder::text),
        .sessionEnded = decoder.boolean("sessionEnded"),
        .endedAt = decoder.optional("endedAt", &RecordDecoder::date),
        .endReason = decoder.optional("endReason", &RecordDecoder::text),
        .promptCount = decoder.integer("promptCount"),
        .lastCompletedTurnID = decoder.optional("lastCompletedTurnID", &RecordDecoder::text),
        .lastSignature = decoder.optional("lastSignature", &RecordDecoder::text),
        .lastSignatureAt = decoder.optional("lastSignatureAt", &RecordDecoder::date),
        .eventCount = decoder.integer("eventCount"),
    };
    // Asked once at the end: the decoder keeps the first violation of all members read above.
    if (decoder.failure()) return std::unexpected(*decoder.failure());
    return snapshot;
}

}  // namespace tallowbrook
