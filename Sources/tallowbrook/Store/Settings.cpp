#include "Store/Settings.h"

#include "Domain/RecordCoding.h"
#include "Text/Digits.h"
#include "Text/TakeUntil.h"

namespace tallowbrook::host {
namespace {

constexpr const char* preferencesKey = "notificationPreferences";
constexpr const char* reminderIntervalKey = "reminderIntervalMinutes";
constexpr const char* completionAfterKey = "completionAfterSeconds";
constexpr const char* channelsKey = "channels";
constexpr const char* execKey = "exec";
constexpr const char* tellWhileLookingKey = "tellWhileLooking";
constexpr const char* pausedUntilKey = "pausedUntil";
constexpr const char* mutesKey = "mutes";
constexpr const char* helperLogKey = "toldOfHelperLog";
constexpr const char* waitingCycleKey = "waitingCycle";

std::string healthKey(Provider provider) {
    return "integrationHealth." + std::string{rawValue(provider)};
}

std::string hookKey(Provider provider) { return "hookHeardAt." + std::string{rawValue(provider)}; }

}  // namespace

std::optional<std::string> Settings::value(const std::string& key) {
    const auto query = database_.prepared("SELECT value FROM settings WHERE key = ?");
    query->bind(1, key);
    if (!query->executeStep()) return std::nullopt;
    return query->getColumn(0).getString();
}

void Settings::setValue(const std::string& key, const std::string& value) {
    const auto insert =
        database_.prepared("INSERT OR REPLACE INTO settings (key, value) VALUES (?, ?)");
    insert->bind(1, key);
    insert->bind(2, value);
    insert->exec();
}

Preferences Settings::preferences() {
    Preferences preferences;
    if (const auto stored = value(preferencesKey))
        if (auto decoded = NotificationPreferencesCoding::decode(*stored))
            preferences.notifications = *decoded;
    if (const auto stored = value(reminderIntervalKey))
        if (const auto minutes = parseNumber<int>(*stored))
            preferences.host.reminderInterval = std::chrono::minutes{*minutes};
    if (const auto stored = value(completionAfterKey))
        if (const auto seconds = parseNumber<int>(*stored))
            preferences.host.completionAfter = Seconds{*seconds};
    if (const auto stored = value(channelsKey))
        preferences.host.channels = ChannelChoice::parse(*stored).value_or(ChannelChoice{});
    if (const auto stored = value(execKey))
        if (auto decoder = RecordDecoder::parse(*stored))
            preferences.host.exec = decoder->text("command");
    preferences.host.tellWhileLooking = value(tellWhileLookingKey) == "on";
    if (const auto stored = value(pausedUntilKey))
        preferences.host.pausedUntil = EventDate::parse(*stored);
    return preferences;
}

void Settings::setPreferences(const Preferences& preferences) {
    setValue(preferencesKey, NotificationPreferencesCoding::encode(preferences.notifications));
    setValue(reminderIntervalKey, std::to_string(preferences.host.reminderInterval.count()));
    // Whole seconds, as the table of preferences takes them.
    setValue(completionAfterKey,
             std::to_string(static_cast<int>(preferences.host.completionAfter.count())));
    setValue(channelsKey, preferences.host.channels.text());
    RecordEncoder exec;
    exec.encode("command", preferences.host.exec);
    setValue(execKey, exec.text());
    setValue(tellWhileLookingKey, preferences.host.tellWhileLooking ? "on" : "off");
    const auto& until = preferences.host.pausedUntil;
    setValue(pausedUntilKey, until ? EventDate::text(*until) : "");
}

Mutes Settings::mutes() {
    const auto stored = value(mutesKey);
    if (!stored) return {};
    return MutesCoding::decode(*stored).value_or(Mutes{});
}

void Settings::setMutes(const Mutes& mutes) { setValue(mutesKey, MutesCoding::encode(mutes)); }

WaitingCycle Settings::waitingCycle() {
    const auto stored = value(waitingCycleKey);
    auto decoder = RecordDecoder::parse(stored.value_or(""));
    if (!decoder) return {};
    WaitingCycle::Pick pick{decoder->text("id"), decoder->date("at")};
    // A cycle that has picked nothing is stored as an object without members.
    if (decoder->failure()) return {};
    return {std::move(pick)};
}

void Settings::setWaitingCycle(const WaitingCycle& cycle) {
    RecordEncoder encoder;
    if (cycle.last) {
        encoder.encode("id", cycle.last->id);
        encoder.encode("at", cycle.last->at);
    }
    setValue(waitingCycleKey, encoder.text());
}

std::optional<Settings::LogPlace> Settings::toldOfHelperLog() {
    const auto stored = value(helperLogKey);
    if (!stored) return std::nullopt;
    std::string_view line = *stored;
    const auto end = parseNumber<std::size_t>(takeUntil(line, ' '));
    if (!end) return std::nullopt;
    return LogPlace{*end, std::string{line}};
}

void Settings::setToldOfHelperLog(const LogPlace& place) {
    setValue(helperLogKey, std::to_string(place.end) + " " + place.line);
}

std::optional<Instant> Settings::hookHeardAt(Provider provider) {
    const auto stored = value(hookKey(provider));
    const auto microseconds = stored ? parseNumber<std::int64_t>(*stored) : std::nullopt;
    if (!microseconds) return std::nullopt;
    return Instant{std::chrono::microseconds{*microseconds}};
}

void Settings::setHookHeardAt(Provider provider, Instant time) {
    setValue(hookKey(provider), std::to_string(storedForm(time)));
}

IntegrationHealthRecord Settings::integrationHealth(Provider provider) {
    const auto stored = value(healthKey(provider));
    if (!stored) return {};
    return IntegrationHealthCoding::decode(*stored).value_or(IntegrationHealthRecord{});
}

void Settings::setIntegrationHealth(Provider provider, const IntegrationHealthRecord& record) {
    setValue(healthKey(provider), IntegrationHealthCoding::encode(record));
}

}  // namespace tallowbrook::host
