#include "Commands/PreferencesCommand.h"

#include <memory>

#include <fmt/core.h>

#include "Commands/CommandLine.h"
#include "Commands/DatabaseDoor.h"
#include "EventBridge/SpoolSignal.h"
#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"
#include "Preferences/Muting.h"
#include "Preferences/PreferenceTable.h"
#include "Store/Settings.h"

namespace tallowbrook::host {
namespace {

std::expected<void, Sentence> make(const PreferenceChange& change, Database& database) {
    // Two changes made at once must not undo each other.
    auto transaction = database.beginWriting();
    Settings settings{database};
    auto changed = setPreference(settings.preferences(), change.name, change.value);
    if (!changed) return std::unexpected(changed.error());
    // A switch that was thrown by hand stays so.
    if (change.name == "paused") changed->host.pausedUntil.reset();
    settings.setPreferences(*changed);
    transaction.commit();
    // A host that sleeps until a reminder is due must learn that it is due earlier.
    SpoolSignal::post();
    return {};
}

// A line for each preference: its name, its value, its meaning. Below, what the user will not be
// told then.
std::string table(const Preferences& preferences) {
    std::string text;
    for (const auto& [name, meaning, show, change] : preferenceRows())
        text += fmt::format("{:<20} {:<12} {}\n", name, show(preferences), meaning);
    const auto muting = Muting::of(preferences, currentInstant(), Calendar::current());
    for (const auto& sentence : muting.sentences()) text += sentence.text() + "\n";
    return text;
}

}  // namespace

int preferences(const TallowbrookPaths& paths, const std::optional<PreferenceChange>& change) {
    return withDatabase(paths, [&](Database& database) {
        if (change)
            if (const auto made = make(*change, database); !made)
                return StandardStreams::fail(made.error().followedBy("Nothing was changed."),
                                             ExitStatus::wrongUsage);
        return StandardStreams::showAsResult(
            table(Settings{database}.preferences().asOf(currentInstant())));
    });
}

void addPreferencesCommand(CommandLine& line) {
    struct Words {
        std::optional<std::string> name;
        std::optional<std::string> value;
    };
    const auto given = std::make_shared<Words>();
    auto words = line.add("preferences", "Show or change what you are told",
                          [given](const TallowbrookPaths& paths) {
                              std::optional<PreferenceChange> change;
                              if (given->name) change = {*given->name, given->value.value_or("")};
                              return preferences(paths, change);
                          });
    words.addOptionalOperand("NAME", given->name, "The preference to change");
    words.addOptionalOperand("VALUE", given->value, "Its new value", "NAME");
}

}  // namespace tallowbrook::host
