#include "Notifications/NotificationPreferences.h"

#include "Domain/EventCoding.h"

namespace tallowbrook {

namespace {

constexpr std::int64_t minutesPerDay = 1440;

std::int64_t minuteOfDay(std::int64_t minute) {
    const auto remainder = minute % minutesPerDay;
    return remainder < 0 ? remainder + minutesPerDay : remainder;
}

RecordEncoder encodedQuietHours(const QuietHours& quietHours) {
    RecordEncoder encoder = EventCoding::makeEncoder();
    encoder.encode("enabled", quietHours.enabled);
    encoder.encode("startMinute", quietHours.startMinute);
    encoder.encode("endMinute", quietHours.endMinute);
    return encoder;
}

QuietHours decodeQuietHours(RecordDecoder& outer) {
    RecordDecoder decoder = outer.record("quietHours");
    // Field by field, past the constructor, which would change the minutes: a record is kept as
    // it was stored.
    QuietHours found;
    found.enabled = decoder.boolean("enabled");
    found.startMinute = decoder.integer("startMinute");
    found.endMinute = decoder.integer("endMinute");
    outer.adopt(decoder);
    return found;
}

}  // namespace

QuietHours::QuietHours(bool isEnabled, std::int64_t start, std::int64_t end)
    : enabled(isEnabled), startMinute(minuteOfDay(start)), endMinute(minuteOfDay(end)) {}

bool QuietHours::contains(Instant date, const Calendar& calendar) const {
    // Equal ends could mean a whole day as well; muting nothing is the smaller harm.
    if (!enabled || startMinute == endMinute) return false;
    const LocalTime time = calendar.localTime(date);
    const int minute = time.hour * 60 + time.minute;
    if (startMinute < endMinute) return startMinute <= minute && minute < endMinute;
    return minute >= startMinute || minute < endMinute;
}

std::string NotificationPreferencesCoding::encode(const NotificationPreferences& preferences) {
    RecordEncoder encoder = EventCoding::makeEncoder();
    encoder.encode("enabled", preferences.enabled);
    encoder.encode("paused", preferences.paused);
    encoder.encode("notifyOnAttention", preferences.notifyOnAttention);
    encoder.encode("notifyOnCompletion", preferences.notifyOnCompletion);
    encoder.encode("notifyOnFailure", preferences.notifyOnFailure);
    encoder.encode("quietHours", encodedQuietHours(preferences.quietHours));
    encoder.encode("dedupeInterval", preferences.dedupeInterval.count());
    encoder.encode("maxEventAge", preferences.maxEventAge.count());
    encoder.encode("playSound", preferences.playSound);
    return encoder.text();
}

std::expected<NotificationPreferences, DecodingError> NotificationPreferencesCoding::decode(
    std::string_view text) {
    auto parsed = EventCoding::makeDecoder(text);
    if (!parsed) return std::unexpected(parsed.error());
    RecordDecoder& decoder = *parsed;
    const NotificationPreferences preferences{
        .enabled = decoder.boolean("enabled"),
        .paused = decoder.boolean("paused"),
        .notifyOnAttention = decoder.boolean("notifyOnAttention"),
        .notifyOnCompletion = decoder.boolean("notifyOnCompletion"),
        .notifyOnFailure = decoder.boolean("notifyOnFailure"),
        .quietHours = decodeQuietHours(decoder),
        .dedupeInterval = Seconds{decoder.number("dedupeInterval")},
        .maxEventAge = Seconds{decoder.number("maxEventAge")},
        .playSound = decoder.boolean("playSound"),
    };
    if (decoder.failure()) return std::unexpected(*decoder.failure());
    return preferences;
}

}  // namespace tallowbrook
