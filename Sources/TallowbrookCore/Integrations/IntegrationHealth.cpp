#include "Integrations/IntegrationHealth.h"

namespace tallowbrook {
namespace {

// Whole seconds: 2025-03-01T14:30:05Z.
std::string isoText(Instant instant) {
    constexpr std::size_t untilSeconds = 19;
    return EventDate::text(instant).substr(0, untilSeconds) + "Z";
}

}  // namespace

std::optional<std::string> IntegrationHealth::diagnosticDescription() const {
    struct Text {
        std::optional<std::string> operator()(const Waiting& health) const {
            return "waiting for the first event since setup at " + isoText(health.since);
        }
        std::optional<std::string> operator()(const Silent& health) const {
            return "no event since setup at " + isoText(health.since);
        }
        std::optional<std::string> operator()(const Receiving& health) const {
            return "last live event " + isoText(health.lastEventAt);
        }
        std::optional<std::string> operator()(const NotApplicable&) const { return std::nullopt; }
    };
    return std::visit(Text{}, state);
}

void IntegrationHealthRecord::noteSetUp(Instant at) { setUpAt = at; }

void IntegrationHealthRecord::noteLiveEvent(Instant at) {
    if (at > lastLiveEventAt.value_or(distantPast)) lastLiveEventAt = at;
}

void IntegrationHealthRecord::reconcile(bool isConfigured, bool isReady,
                                        std::optional<Instant> storedLiveEvent, Instant now) {
    if (storedLiveEvent) noteLiveEvent(*storedLiveEvent);
    // The wait ends with the hooks, but what was once received stays true.
    if (!isConfigured) {
        setUpAt.reset();
        return;
    }
    // Hooks that were there before this record: the waiting begins when they are first seen.
    if (isReady && !setUpAt && !lastLiveEventAt) setUpAt = now;
}

IntegrationHealth IntegrationHealthRecord::health(bool isReady, Instant now,
                                                  Seconds gracePeriod) const {
    if (!isReady) return IntegrationHealth::notApplicable();
    // An event from before the setup came through other hooks and proves nothing for these.
    if (setUpAt && lastLiveEventAt.value_or(distantPast) < *setUpAt)
        return now - *setUpAt >= gracePeriod ? IntegrationHealth::silent(*setUpAt)
                                             : IntegrationHealth::waiting(*setUpAt);
    if (lastLiveEventAt) return IntegrationHealth::receiving(*lastLiveEventAt);
    return IntegrationHealth::notApplicable();
}

std::string IntegrationHealthCoding::encode(const IntegrationHealthRecord& record) {
    RecordEncoder encoder;
    encoder.encode("setUpAt", record.setUpAt);
    encoder.encode("lastLiveEventAt", record.lastLiveEventAt);
    return encoder.text();
}

std::expected<IntegrationHealthRecord, DecodingError> IntegrationHealthCoding::decode(
    std::string_view text) {
    auto decoder = RecordDecoder::parse(text);
    if (!decoder) return std::unexpected(decoder.error());
    IntegrationHealthRecord record;
    record.setUpAt = decoder->optional("setUpAt", &RecordDecoder::date);
    record.lastLiveEventAt = decoder->optional("lastLiveEventAt", &RecordDecoder::date);
    if (decoder->failure()) return std::unexpected(*decoder->failure());
    return record;
}

}  // namespace tallowbrook
