#include "Commands/PreferencesCommand.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

#include "Commands/StoreCommand.h"
#include "Notifications/ReminderPolicy.h"
#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"
#include "Preferences/HostSettings.h"
#include "Text/Digits.h"

namespace tallowbrook::host {
namespace {

using Preferences = NotificationPreferences;

struct Row {
    std::string_view name;
    std::string_view meaning;
    std::string (*show)(const Preferences&);
    bool (*change)(Preferences&, std::string_view value);
};

bool parseSwitch(std::string_view value, bool& target) {
    if (value != "on" && value != "off") return false;
    target = value == "on";
    return true;
}

bool parseSeconds(std::string_view value, Seconds& target) {
    constexpr int aYear = 31'536'000;
    const auto seconds = parseNumber<int>(value);
    if (!seconds || *seconds < 0 || *seconds > aYear) return false;
    target = Seconds{*seconds};
    return true;
}

// Minutes after midnight of "22:00".
std::optional<int> parseTimeOfDay(std::string_view text) {
    if (text.size() != 5 || text[2] != ':') return std::nullopt;
    const auto hour = parseNumber<unsigned>(text.substr(0, 2));
    const auto minute = parseNumber<unsigned>(text.substr(3));
    if (!hour || !minute || *hour > 23 || *minute > 59) return std::nullopt;
    return static_cast<int>(*hour * 60 + *minute);
}

bool parseQuietHours(std::string_view value, QuietHours& target) {
    if (parseSwitch(value, target.enabled)) return true;
    constexpr std::size_t timeLength = 5;
    if (value.size() != 2 * timeLength + 1 || value[timeLength] != '-') return false;
    const auto start = parseTimeOfDay(value.substr(0, timeLength));
    const auto end = parseTimeOfDay(value.substr(timeLength + 1));
    // An empty window would look switched on and never be in force.
    if (!start || !end || *start == *end) return false;
    target = QuietHours{true, *start, *end};
    return true;
}

std::string showSwitch(bool value) { return value ? "on" : "off"; }
std::string showSeconds(Seconds value) { return fmt::format("{}", value.count()); }

std::string showQuietHours(const QuietHours& hours) {
    if (!hours.enabled) return "off";
    return fmt::format("{:02}:{:02}-{:02}:{:02}", hours.startMinute / 60, hours.startMinute % 60,
                       hours.endMinute / 60, hours.endMinute % 60);
}

template <bool Preferences::* field>
constexpr Row switchRow(std::string_view name, std::string_view meaning) {
    return {name, meaning, [](const Preferences& from) { return showSwitch(from.*field); },
            [](Preferences& to, std::string_view value) { return parseSwitch(value, to.*field); }};
}

template <Seconds Preferences::* field>
constexpr Row secondsRow(std::string_view name, std::string_view meaning) {
    return {name, meaning, [](const Preferences& from) { return showSeconds(from.*field); },
            [](Preferences& to, std::string_view value) { return parseSeconds(value, to.*field); }};
}

constexpr std::array rows{
    switchRow<&Preferences::enabled>("enabled", "notifications at all"),
    switchRow<&Preferences::paused>("paused", "hold them back for now"),
    switchRow<&Preferences::notifyOnAttention>("notifyOnAttention",
                                               "when a session needs permission or input"),
    switchRow<&Preferences::notifyOnCompletion>("notifyOnCompletion", "when a turn completes"),
    switchRow<&Preferences::notifyOnFailure>("notifyOnFailure", "when a turn fails"),
    Row{"quietHours", "tell nothing in these hours, such as 22:00-07:00",
        [](const Preferences& from) { return showQuietHours(from.quietHours); },
        [](Preferences& to, std::string_view value) {
            return parseQuietHours(value, to.quietHours);
        }},
    secondsRow<&Preferences::dedupeInterval>("dedupeInterval",
                                             "seconds in which the same is told once"),
    secondsRow<&Preferences::maxEventAge>("maxEventAge",
                                          "seconds after which an event is too old to tell"),
    switchRow<&Preferences::playSound>("playSound", "with a sound"),
};

std::string row(std::string_view name, std::string_view value, std::string_view meaning) {
    return fmt::format("{:<20} {:<12} {}\n", name, value, meaning);
}

std::string noSuchValue(std::string_view name, std::string_view value) {
    return fmt::format("\"{}\" is no value for {}.", value, name);
}

// Absent, or a whole sentence for the user; nothing is changed then.
std::optional<std::string> apply(const PreferenceChange& change, EventStore& store) {
    if (change.name == reminderIntervalName) {
        const auto interval = parseReminderInterval(change.value);
        if (!interval) return interval.error();
        store.setReminderInterval(*interval);
        return std::nullopt;
    }
    const auto changed = setPreference(store.preferences().value_or(defaultPreferences()),
                                       change.name, change.value);
    if (!changed) return changed.error();
    store.setPreferences(*changed);
    return std::nullopt;
}

}  // namespace

std::string preferencesTable(const NotificationPreferences& preferences) {
    std::string text;
    for (const auto& [name, meaning, show, change] : rows)
        text += row(name, show(preferences), meaning);
    return text;
}

std::expected<std::chrono::minutes, std::string> parseReminderInterval(std::string_view value) {
    if (value == "off") return std::chrono::minutes{0};
    for (const int choice : ReminderPolicy::intervalChoices)
        if (value == std::to_string(choice)) return std::chrono::minutes{choice};
    return std::unexpected(noSuchValue(reminderIntervalName, value));
}

std::string reminderIntervalRow(std::chrono::minutes interval) {
    return row(reminderIntervalName,
               interval.count() > 0 ? std::to_string(interval.count()) : "off",
               "minutes of waiting after which you are reminded: off, 5, 10, 15 or 30");
}

std::expected<NotificationPreferences, std::string> setPreference(
    NotificationPreferences preferences, std::string_view name, std::string_view value) {
    const auto* row = std::ranges::find(rows, name, &Row::name);
    if (row == rows.end())
        return std::unexpected(fmt::format("There is no preference named \"{}\".", name));
    if (!row->change(preferences, value)) return std::unexpected(noSuchValue(name, value));
    return preferences;
}

int preferences(const TallowbrookPaths& paths, const std::optional<PreferenceChange>& change) {
    return withStore(paths, [&](EventStore& store) {
        if (change)
            if (const auto refusal = apply(*change, store))
                return StandardStreams::fail(*refusal + " Nothing was changed.",
                                             ExitStatus::wrongUsage);
        return StandardStreams::showAsResult(
            preferencesTable(store.preferences().value_or(defaultPreferences())) +
            reminderIntervalRow(store.reminderInterval().value_or(defaultReminderInterval)));
    });
}

}  // namespace tallowbrook::host
