#include "Commands/PauseCommand.h"

#include <memory>

#include "Commands/CommandLine.h"
#include "Commands/DatabaseDoor.h"
#include "Commands/EndWords.h"
#include "EventBridge/SpoolSignal.h"
#include "Output/StandardStreams.h"
#include "Store/Settings.h"

namespace tallowbrook::host {
void setPause(Database& database, bool isPaused, std::optional<Instant> until) {
    auto transaction = database.beginWriting();
    Settings settings{database};
    auto preferences = settings.preferences();
    preferences.notifications.paused = isPaused;
    preferences.host.pausedUntil = until;
    settings.setPreferences(preferences);
    transaction.commit();
    // A host that sleeps must learn when it is to wake.
    SpoolSignal::post();
}

int pause(const TallowbrookPaths& paths, const EndWordsGiven& words) {
    return withDatabase(paths, [&](Database& database) {
        const Instant now = currentInstant();
        const auto end = endOf(words.first, words.second, now, Calendar::current());
        if (!end)
            return StandardStreams::fail(end.error().followedBy("Nothing was changed."),
                                         ExitStatus::wrongUsage);
        setPause(database, true, *end);
        return StandardStreams::showAsResult(
            *end ? "Notifications are paused " + untilWords(*end, now) + ".\n"
                 : "Notifications are paused until \"tallowbrook resume\".\n");
    });
}

int resume(const TallowbrookPaths& paths) {
    return withDatabase(paths, [](Database& database) {
        const auto before = Settings{database}.preferences().asOf(currentInstant());
        setPause(database, false, std::nullopt);
        std::string text = before.notifications.paused ? "The pause is over.\n"
                                                       : "Notifications were not paused.\n";
        if (!before.notifications.enabled)
            text += "They are switched off (preferences enabled on).\n";
        return StandardStreams::showAsResult(text);
    });
}

void addPauseCommands(CommandLine& line) {
    const auto given = std::make_shared<EndWordsGiven>();
    auto words = line.add("pause", "Hold all notifications back: pause 30m, pause until 14:00",
                          [given](const TallowbrookPaths& paths) { return pause(paths, *given); });
    words.addOptionalOperand("TIME", given->first,
                             "A span such as 30m or 1h30m; without, until you resume");
    words.addOptionalOperand("HOUR", given->second, "Behind \"until\": a time such as 14:00");
    line.add("resume", "End a pause", resume);
}

}  // namespace tallowbrook::host
