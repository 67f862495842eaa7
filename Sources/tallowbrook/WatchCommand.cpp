#include "WatchCommand.h"

#include <fmt/core.h>

#include <cstdio>

#include "Diagnostics/DiagnosticLog.h"
#include "EventStore.h"
#include "HostLock.h"
#include "HostSettings.h"
#include "Ingest.h"
#include "Notifier.h"
#include "SessionList.h"
#include "WakeUp.h"

namespace tallowbrook::host {
namespace {

constexpr std::chrono::milliseconds timerInterval{2000};
// Those who watch another host see no signal when it has stored what a signal announced.
constexpr std::chrono::milliseconds lookingInterval{500};
constexpr std::int64_t maxLogBytes = 262144;

class Watcher {
 public:
    Watcher(TallowbrookPaths paths, EventStore store)
        : paths_{std::move(paths)}, store_{std::move(store)} {
        lastShown_ = store_.newestNotification();
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
        try {
            return leads() ? drainAndTell() : showTold();
        } catch (const SQLite::Exception& error) {
            complain(fmt::format("The database failed: {}. The spool is kept.", error.what()));
            return false;
        }
    }

    void printSessions() {
        const Instant now = currentInstant();
        const auto list = SessionList::make(store_.sessions(), ListScope::recent, now);
        fmt::print("{}", list.table(now));
        std::fflush(stdout);
    }

 private:
    bool drainAndTell() {
        const auto preferences = store_.preferences().value_or(defaultPreferences());
        const Ingest ingest{{paths_}, preferences, Calendar::current()};
        const auto report = ingest.run(store_, currentInstant());
        for (const auto& trouble : report.troubles) complain(trouble);
        if (report.invalidLines > 0)
            say(fmt::format("{} of the spool held no event and {} skipped.",
                            report.invalidLines == 1 ? "One line"
                                                     : fmt::format("{} lines", report.invalidLines),
                            report.invalidLines == 1 ? "was" : "were"));
        deliverPending(store_, Notifier::printing(), preferences.maxEventAge, currentInstant());
        return report.troubles.empty();
    }

    bool showTold() {
        const auto notifier = Notifier::printing();
        for (const auto& notification : store_.toldNotifications(lastShown_)) {
            notifier.deliver(notification.content);
            lastShown_ = notification.number;
        }
        return true;
    }

    void say(const std::string& sentence) {
        fmt::print(stderr, "tallowbrook: {}\n", sentence);
        DiagnosticLog{paths_.appLogFile(), maxLogBytes}.append("watch: " + sentence,
                                                               currentInstant());
    }

    // A trouble that stays comes again with every pass; it is said once until another one comes.
    void complain(const std::string& sentence) {
        if (sentence != lastComplaint_) say(sentence);
        lastComplaint_ = sentence;
    }

    TallowbrookPaths paths_;
    EventStore store_;
    std::optional<HostLock> lock_;
    std::int64_t lastShown_ = 0;
    std::string lastComplaint_;
};

int fail(const std::string& sentence) {
    fmt::print(stderr, "tallowbrook: {}\n", sentence);
    return 1;
}

void stay(Watcher& watcher, WakeUp& wakeUp) {
    while (wakeUp.wait(watcher.leads() ? timerInterval : lookingInterval) !=
           WakeUp::Reason::endRequested) {
        if (!watcher.leads() && watcher.tryToLead() && watcher.leads())
            fmt::print(stderr, "tallowbrook: The other host has ended; this one takes over.\n");
        watcher.pass();
    }
}

}  // namespace

int watch(const TallowbrookPaths& paths, WatchMode mode) {
    auto store = EventStore::open(paths);
    if (!store) return fail(store.error());
    Watcher watcher{paths, std::move(*store)};
    if (auto tried = watcher.tryToLead(); !tried)
        return fail("The lock of this home cannot be taken: " + tried.error().description() + ".");
    if (!watcher.leads())
        fmt::print(stderr,
                   "tallowbrook: Another host watches this home already. This one only shows what "
                   "that one stores.\n");

    // The signal is observed before the first pass, so that nothing slips through between them.
    auto wakeUp = WakeUp::start();
    if (!wakeUp) return fail("Signals cannot be received: " + wakeUp.error().description() + ".");
    const bool passed = watcher.pass();
    watcher.printSessions();
    if (mode == WatchMode::once) return passed ? 0 : 1;
    stay(watcher, *wakeUp);
    return 0;
}

}  // namespace tallowbrook::host
