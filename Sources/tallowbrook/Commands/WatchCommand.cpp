#include "Commands/WatchCommand.h"

#include <fmt/core.h>

#include <set>

#include "Diagnostics/DiagnosticLog.h"
#include "Lists/SessionList.h"
#include "Loop/WakeUp.h"
#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"
#include "Preferences/HostSettings.h"
#include "Store/EventStore.h"
#include "Watch/HostLock.h"
#include "Watch/Ingest.h"
#include "Watch/Notifier.h"
#include "Watch/Reminders.h"

namespace tallowbrook::host {
namespace {

constexpr std::chrono::milliseconds timerInterval{2000};
// Those who watch another host see no signal when it has stored what a signal announced.
constexpr std::chrono::milliseconds lookingInterval{500};
// Looking for them reads every session.
constexpr std::chrono::seconds remindersEvery{15};
constexpr std::int64_t maxLogBytes = 262144;
constexpr std::string_view notTold =
    "Standard output cannot be written. What is to be told is kept for the next try.";

class Watcher {
 public:
    Watcher(TallowbrookPaths paths, EventStore store)
        : paths_{std::move(paths)}, store_{std::move(store)} {
        lastShown_ = store_.newestToldNotification();
    }

    // Drains from here on if no other host does.
    std::expected<void, FileError> tryToLead() {
        auto lock = HostLock::tryAcquire(paths_);
        if (!lock) return std::unexpected(lock.error());
        lock_ = std::move(*lock);
        return {};
    }

    bool leads() const { return lock_.has_value(); }

    // False when something could not be done; it stands on standard error and in the log. A pass
    // that fails loses nothing: what it did not commit is still in the spool.
    bool pass() {
        std::set<std::string> troubles;
        try {
            if (!leads()) lookOn(troubles);
            if (leads()) drainAndTell(troubles);
        } catch (const SQLite::Exception& error) {
            troubles.insert(
                fmt::format("The database failed: {}. The spool is kept.", error.what()));
        }
        // A trouble that stays comes again with every pass, and is said once.
        for (const auto& trouble : troubles)
            if (!standingTroubles_.contains(trouble)) say(trouble);
        standingTroubles_ = std::move(troubles);
        return standingTroubles_.empty();
    }

    // Gives an exit status.
    int showSessions() {
        const Instant now = currentInstant();
        return StandardStreams::showAsResult(
            SessionList::make(store_.sessions(), ListScope::recent, now).table(now));
    }

 private:
    // Shows what another host has told, up to its last word when this one takes over from it.
    void lookOn(std::set<std::string>& troubles) {
        if (tryToLead() && leads())
            StandardStreams::complain("The other host has ended; this one takes over.");
        const auto notifier = Notifier::printing();
        for (const auto& notification : store_.toldNotifications(lastShown_)) {
            if (!notifier.deliver(notification.content)) {
                troubles.insert(std::string{notTold});
                return;
            }
            lastShown_ = notification.number;
        }
    }

    void drainAndTell(std::set<std::string>& troubles) {
        const auto preferences = store_.preferences().value_or(defaultPreferences());
        const Ingest ingest{{paths_}, preferences, Calendar::current()};
        const Instant now = currentInstant();
        const auto report = ingest.run(store_, now);
        troubles.insert(report.troubles.begin(), report.troubles.end());
        if (report.invalidLines > 0)
            say(fmt::format("{} of the spool held no event and {} skipped.",
                            report.invalidLines == 1 ? "One line"
                                                     : fmt::format("{} lines", report.invalidLines),
                            report.invalidLines == 1 ? "was" : "were"));
        if (now - remindersRunAt_ >= remindersEvery) {
            remindersRunAt_ = now;
            Reminders{store_.reminderInterval().value_or(defaultReminderInterval), preferences,
                      Calendar::current()}
                .run(store_, now);
        }
        if (!deliverPending(store_, Notifier::printing(), preferences.maxEventAge,
                            currentInstant()))
            troubles.insert(std::string{notTold});
    }

    void say(const std::string& sentence) {
        StandardStreams::complain(sentence);
        DiagnosticLog{paths_.appLogFile(), maxLogBytes}.append("watch: " + sentence,
                                                               currentInstant());
    }

    TallowbrookPaths paths_;
    EventStore store_;
    std::optional<HostLock> lock_;
    std::int64_t lastShown_ = 0;
    Instant remindersRunAt_ = distantPast;
    std::set<std::string> standingTroubles_;
};

int run(Watcher& watcher, WakeUp& wakeUp, WatchMode mode) {
    const bool passed = watcher.pass();
    const int shown = watcher.showSessions();
    if (mode == WatchMode::once) return passed ? shown : ExitStatus::failed;
    while (wakeUp.wait(watcher.leads() ? timerInterval : lookingInterval) !=
           WakeUp::Reason::endRequested)
        watcher.pass();
    return ExitStatus::done;
}

}  // namespace

int watch(const TallowbrookPaths& paths, WatchMode mode) {
    auto store = EventStore::open(paths);
    if (!store) return StandardStreams::fail(store.error());
    try {
        Watcher watcher{paths, std::move(*store)};
        if (auto tried = watcher.tryToLead(); !tried)
            return StandardStreams::fail(
                "The lock of this home cannot be taken: " + tried.error().description() + ".");
        if (!watcher.leads())
            StandardStreams::complain(
                "Another host watches this home already. This one only shows what that one "
                "stores.");
        // Signals are received before the first pass, so that nothing slips through in between.
        auto wakeUp = WakeUp::start();
        if (!wakeUp)
            return StandardStreams::fail(
                "Signals cannot be received: " + wakeUp.error().description() + ".");
        return run(watcher, *wakeUp, mode);
    } catch (const SQLite::Exception& error) {
        return StandardStreams::fail(fmt::format("The database cannot be read: {}.", error.what()));
    }
}

}  // namespace tallowbrook::host
