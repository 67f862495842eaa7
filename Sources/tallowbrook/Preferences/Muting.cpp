#include "Preferences/Muting.h"

#include <fmt/core.h>

#include "Output/TimeText.h"

namespace tallowbrook::host {
namespace {

// A host that no signal reaches looks at the spool every two seconds, and may be busy.
constexpr Seconds roomForTheHost{10};
// Long enough for the same thing to be a second request, and no second report of the first.
constexpr Seconds sameRequest{60};

Sentence nothingAs(const char* why, const char* change) {
    return Sentence{
        fmt::format("Nothing is told, as {} (tallowbrook preferences {})", why, change)};
}

std::optional<Sentence> mutingEverything(const NotificationPreferences& told) {
    if (!told.enabled) return nothingAs("\"enabled\" is off", "enabled on");
    if (told.paused) return nothingAs("\"paused\" is on", "paused off");
    if (!told.notifyOnAttention && !told.notifyOnCompletion && !told.notifyOnFailure)
        return nothingAs("every kind is off", "notifyOnAttention on");
    if (told.maxEventAge <= ageOfEveryEvent)
        return nothingAs("\"maxEventAge\" is 0", "maxEventAge 600");
    return std::nullopt;
}

Sentence quiet(const QuietHours& hours, bool areNow) {
    const auto end = TimeText::minuteOfDay(hours.endMinute);
    if (areNow) return Sentence{"Quiet hours: nothing is told until " + end};
    return Sentence{fmt::format("Nothing is told from {} to {}",
                                TimeText::minuteOfDay(hours.startMinute), end)};
}

std::optional<Sentence> mutingSome(const Preferences& preferences) {
    const auto& told = preferences.notifications;
    std::string text;
    const auto add = [&](bool isMuted, const std::string& what) {
        if (isMuted) text += (text.empty() ? "Not told: " : ", ") + what;
    };
    add(!told.notifyOnAttention, "requests and reminders of them");
    add(!told.notifyOnCompletion, "completed turns");
    add(!told.notifyOnFailure, "failed turns");
    add(told.notifyOnAttention && preferences.host.reminderInterval.count() <= 0, "reminders");
    add(told.dedupeInterval >= sameRequest,
        fmt::format("the same of a session within {} s", told.dedupeInterval.count()));
    add(told.maxEventAge < roomForTheHost,
        fmt::format("what comes more than {} s late", told.maxEventAge.count()));
    if (text.empty()) return std::nullopt;
    return Sentence{text};
}

}  // namespace

Muting Muting::of(const Preferences& preferences, Instant now, const Calendar& calendar) {
    Muting muting;
    muting.everything = mutingEverything(preferences.notifications);
    const auto& hours = preferences.notifications.quietHours;
    muting.areQuietNow = hours.contains(now, calendar);
    if (hours.enabled) muting.quietHours = quiet(hours, muting.areQuietNow);
    muting.some = mutingSome(preferences);
    return muting;
}

std::vector<Sentence> Muting::sentences() const {
    if (everything) return {*everything};
    std::vector<Sentence> said;
    for (const auto& sentence : {quietHours, some})
        if (sentence) said.push_back(*sentence);
    return said;
}

std::vector<Sentence> Muting::sentencesNow() const {
    auto now = *this;
    if (!areQuietNow) now.quietHours.reset();
    return now.sentences();
}

}  // namespace tallowbrook::host
