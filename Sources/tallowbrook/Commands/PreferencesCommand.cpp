#include "Commands/PreferencesCommand.h"

#include <memory>

#include <fmt/core.h>

#include <algorithm>

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

// Absent for a name that is none.
const PreferenceRow* rowOf(const std::string& name) {
    const auto rows = preferenceRows();
    const auto found = std::ranges::find(rows, name, &PreferenceRow::name);
    return found == rows.end() ? nullptr : &*found;
}

std::expected<void, Sentence> make(const PreferenceChange& change, Database& database) {
    // Two changes made at once must not undo each other.
    auto transaction = database.beginWriting();
    Settings settings{database};
    const auto* row = rowOf(change.name);
    if (row == nullptr) return std::unexpected(noPreference(change.name));
    auto changed = setPreference(settings.preferences(), change.name,
                                 change.value ? *change.value : row->show({}));
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
    for (const auto& row : preferenceRows())
        text += fmt::format("{:<20} {:<12} {}\n", row.name, row.show(preferences), row.meaning);
    const auto muting = Muting::of(preferences, currentInstant(), Calendar::current());
    for (const auto& sentence : muting.sentences()) text += sentence.text() + "\n";
    return text;
}

std::string details(const PreferenceRow& row, const Preferences& preferences) {
    return fmt::format("{}: {}\n  {}\n  Values: {}\n  Default: {}\n", row.name,
                       row.show(preferences), row.meaning, row.values, row.show({}));
}

}  // namespace

int showPreferences(const TallowbrookPaths& paths, const std::optional<std::string>& name) {
    const auto* row = name ? rowOf(*name) : nullptr;
    if (name && row == nullptr)
        return StandardStreams::fail(noPreference(*name), ExitStatus::wrongUsage);
    return withDatabaseIfAny(paths, [&](Database* database) {
        const auto stored = database != nullptr ? Settings{*database}.preferences() : Preferences{};
        const auto preferences = stored.asOf(currentInstant());
        return StandardStreams::showAsResult(row != nullptr ? details(*row, preferences)
                                                            : table(preferences));
    });
}

int changePreference(const TallowbrookPaths& paths, const PreferenceChange& change) {
    return withDatabase(paths, [&](Database& database) {
        if (const auto made = make(change, database); !made)
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
        std::optional<std::string> unset;
    };
    const auto given = std::make_shared<Words>();
    auto words = line.add(
        "preferences", "Show or change what you are told",
        [given](const TallowbrookPaths& paths) {
            if (given->unset) return changePreference(paths, {*given->unset, std::nullopt});
            if (given->value) return changePreference(paths, {*given->name, given->value});
            return showPreferences(paths, given->name);
        },
        "\nExamples:\n"
        "  tallowbrook preferences\n"
        "  tallowbrook preferences quietHours\n"
        "  tallowbrook preferences quietHours 22:00-07:00\n"
        "  tallowbrook preferences --unset quietHours");
    words.addOptionalOperand("NAME", given->name, "The preference to show or change");
    words.addOptionalOperand("VALUE", given->value, "Its new value");
    words.addOption("--unset", "NAME", given->unset, "Give a preference its default again", "NAME");
}

}  // namespace tallowbrook::host
