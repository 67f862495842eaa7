#include "Preferences/PreferenceTable.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "Notifications/ReminderPolicy.h"
#include "Output/NearestWord.h"
#include "Output/TimeText.h"
#include "Preferences/Muting.h"
#include "Preferences/TimeOfDay.h"
#include "Text/Digits.h"

namespace tallowbrook::host {
namespace {

bool parse(std::string_view value, bool& target) {
    if (value != "on" && value != "off") return false;
    target = value == "on";
    return true;
}

// Whole seconds, so that the value is shown as it was typed, and no more than a year of them, far
// from where a time in the past or future could overflow.
bool parse(std::string_view value, Seconds& target) {
    constexpr int aYear = 31'536'000;
    const auto seconds = parseNumber<int>(value);
    if (!seconds || *seconds < 0 || *seconds > aYear) return false;
    target = Seconds{*seconds};
    return true;
}

// A switch keeps the hours, so that they need not be typed again.
bool parse(std::string_view value, QuietHours& target) {
    if (parse(value, target.enabled)) return true;
    constexpr std::size_t timeLength = 5;
    if (value.size() != 2 * timeLength + 1 || value[timeLength] != '-') return false;
    const auto start = parseTimeOfDay(value.substr(0, timeLength));
    const auto end = parseTimeOfDay(value.substr(timeLength + 1));
    // An empty window would look switched on and never be in force.
    if (!start || !end || *start == *end) return false;
    target = QuietHours{true, *start, *end};
    return true;
}

// Of minutes there is the interval of reminders alone, and of that the few choices that are
// offered, so that a typing error cannot make it remind all day.
bool parse(std::string_view value, std::chrono::minutes& target) {
    if (value == "off") {
        target = std::chrono::minutes{0};
        return true;
    }
    const auto* choice =
        std::ranges::find_if(ReminderPolicy::intervalChoices,
                             [value](int minutes) { return value == std::to_string(minutes); });
    if (choice == ReminderPolicy::intervalChoices.end()) return false;
    target = std::chrono::minutes{*choice};
    return true;
}

// A command may hold anything but what would break the list of preferences.
bool parse(std::string_view value, std::string& target) {
    constexpr std::size_t longest = 4096;
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; };
    if (value.empty() || value.size() > longest || std::ranges::any_of(value, isControl))
        return false;
    target = value == "off" ? "" : value;
    return true;
}

bool parse(std::string_view value, ChannelChoice& target) {
    auto choice = ChannelChoice::parse(value);
    if (choice) target = std::move(*choice);
    return choice.has_value();
}

std::string text(bool value) { return value ? "on" : "off"; }

std::string text(Seconds value) { return fmt::format("{}", value.count()); }

std::string text(const QuietHours& hours) {
    if (!hours.enabled) return "off";
    return TimeText::minuteOfDay(hours.startMinute) + "-" + TimeText::minuteOfDay(hours.endMinute);
}

std::string text(std::chrono::minutes value) {
    return value.count() > 0 ? std::to_string(value.count()) : "off";
}

std::string text(const ChannelChoice& choice) { return choice.text(); }

std::string text(const std::string& command) { return command.empty() ? "off" : command; }

// Which values there are of a type, in words.
template <typename Value>
constexpr std::string_view valuesOf = "";
template <>
constexpr std::string_view valuesOf<bool> = "on or off";
template <>
constexpr std::string_view valuesOf<Seconds> = "a number of seconds, up to a year";
template <>
constexpr std::string_view valuesOf<QuietHours> = "off, on, or hours such as 22:00-07:00";
template <>
constexpr std::string_view valuesOf<std::chrono::minutes> = "off, 5, 10, 15 or 30 (minutes)";
template <>
constexpr std::string_view valuesOf<std::string> = "off, or a command for /bin/sh";
template <>
constexpr std::string_view valuesOf<ChannelChoice> = "auto, or names such as desktop,lines";

// A field of either record.
template <typename Value>
auto& fieldOf(auto& preferences, Value NotificationPreferences::* field) {
    return preferences.notifications.*field;
}
template <typename Value>
auto& fieldOf(auto& preferences, Value HostPreferences::* field) {
    return preferences.host.*field;
}

template <auto field>
constexpr PreferenceRow row(std::string_view name, std::string_view meaning) {
    return {
        name, meaning,
        valuesOf<std::remove_cvref_t<decltype(fieldOf(std::declval<Preferences&>(), field))>>,
        [](const Preferences& from) { return text(fieldOf(from, field)); },
        [](Preferences& to, std::string_view value) { return parse(value, fieldOf(to, field)); }};
}

constexpr std::array rows{
    row<&NotificationPreferences::enabled>("enabled", "notifications at all"),
    row<&NotificationPreferences::paused>("paused", "hold them back for now"),
    row<&NotificationPreferences::notifyOnAttention>("notifyOnAttention",
                                                     "when a session needs permission or input"),
    row<&NotificationPreferences::notifyOnCompletion>("notifyOnCompletion",
                                                      "when a turn completes"),
    row<&NotificationPreferences::notifyOnFailure>("notifyOnFailure", "when a turn fails"),
    row<&NotificationPreferences::quietHours>("quietHours",
                                              "tell nothing in these hours, such as 22:00-07:00"),
    row<&NotificationPreferences::dedupeInterval>("dedupeInterval",
                                                  "seconds in which the same is told once"),
    row<&NotificationPreferences::maxEventAge>("maxEventAge",
                                               "seconds after which an event is too old to tell"),
    row<&NotificationPreferences::playSound>("playSound", "with a sound"),
    row<&HostPreferences::completionAfter>("completionAfter",
                                           "seconds from which on a turn is told as finished"),
    row<&HostPreferences::reminderInterval>(
        "reminderInterval",
        "minutes of waiting after which you are reminded: off, 5, 10, 15 or 30"),
    row<&HostPreferences::channels>("channels",
                                    "where you are told: auto, or such as desktop,lines"),
    row<&HostPreferences::exec>("exec", "run this command too, with the notification as JSON"),
    row<&HostPreferences::tellWhileLooking>("tellWhileLooking",
                                            "also of a session that you look at"),
};

}  // namespace

std::span<const PreferenceRow> preferenceRows() { return rows; }

Sentence noPreference(std::string_view name) {
    std::vector<std::string> names;
    names.reserve(rows.size());
    for (const auto& row : rows) names.emplace_back(row.name);
    return Sentence{
        fmt::format("There is no preference named \"{}\"{}", name, suggestion(name, names))};
}

std::expected<Preferences, Sentence> setPreference(Preferences preferences, std::string_view name,
                                                   std::string_view value) {
    const auto* row = std::ranges::find(rows, name, &PreferenceRow::name);
    if (row == rows.end()) return std::unexpected(noPreference(name));
    if (!row->change(preferences, value))
        return std::unexpected(
            Sentence{fmt::format("\"{}\" is no value for {}: give {}.", value, name, row->values)});
    if (preferences.notifications.maxEventAge <= ageOfEveryEvent && name == "maxEventAge")
        return std::unexpected(
            Sentence{"With maxEventAge 0 nothing would ever be told, since every event is older by "
                     "the time it comes. \"enabled off\" switches notifications off."});
    return preferences;
}

}  // namespace tallowbrook::host
