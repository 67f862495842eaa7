#include "Commands/PreferencesCommand.h"

#include <fmt/core.h>

#include "Commands/StoreCommand.h"
#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"
#include "Preferences/PreferenceTable.h"

namespace tallowbrook::host {
namespace {

Preferences storedPreferences(EventStore& store) {
    Preferences preferences;
    if (const auto notifications = store.preferences()) preferences.notifications = *notifications;
    if (const auto interval = store.reminderInterval())
        preferences.host.reminderInterval = *interval;
    return preferences;
}

std::expected<void, Sentence> make(const PreferenceChange& change, EventStore& store) {
    // Two changes made at once must not undo each other.
    auto transaction = store.beginWriting();
    const auto changed = setPreference(storedPreferences(store), change.name, change.value);
    if (!changed) return std::unexpected(changed.error());
    store.setPreferences(changed->notifications);
    store.setReminderInterval(changed->host.reminderInterval);
    transaction.commit();
    return {};
}

// A line for each preference: its name, its value, its meaning.
std::string table(const Preferences& preferences) {
    std::string text;
    for (const auto& [name, meaning, show, change] : preferenceRows())
        text += fmt::format("{:<20} {:<12} {}\n", name, show(preferences), meaning);
    return text;
}

}  // namespace

int preferences(const TallowbrookPaths& paths, const std::optional<PreferenceChange>& change) {
    return withStore(paths, [&](EventStore& store) {
        if (change)
            if (const auto made = make(*change, store); !made)
                return StandardStreams::fail(made.error().followedBy("Nothing was changed."),
                                             ExitStatus::wrongUsage);
        return StandardStreams::showAsResult(table(storedPreferences(store)));
    });
}

}  // namespace tallowbrook::host
