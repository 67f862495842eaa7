#include "Watch/Watcher.h"

#include <algorithm>
#include <chrono>

#include "Preferences/HostSettings.h"
#include "Store/Outbox.h"
#include "Store/Settings.h"
#include "Watch/Absence.h"
#include "Watch/Deliveries.h"
#include "Watch/Hold.h"
#include "Watch/Ingest.h"
#include "Watch/PresenceTelling.h"
#include "Watch/Reminders.h"

namespace tallowbrook::host {
namespace {

// What could not be done is tried again: a lock is free by then, a disk has room.
constexpr std::chrono::seconds timeToNextTry{2};
constexpr const char* notTold =
    "Standard output cannot be written. What is to be told is kept for the next try.";

}  // namespace

Watcher::Watcher(Database& database, std::vector<EventSource> sources,
                 const std::vector<Channel>& channels, Troubles& troubles,
                 WatcherOperations operations)
    : database_{database},
      sources_{std::move(sources)},
      channels_{channels},
      troubles_{troubles},
      operations_{std::move(operations)} {}

bool Watcher::pass() {
    nextDue_.reset();
    const bool done = troubles_.during([this] {
        // Read anew each time: another process may have changed them.
        const auto preferences = Settings{database_}.preferences();
        const Instant now = operations_.now();
        if (!hasBegun_)
            for (const auto& channel : channels_)
                Outbox{database_}.recover(channel.name, !channel.state().toldTwiceHarms);
        ingest(preferences, now);
        followAgents(preferences, now);
        takeBack(now);
        if (const auto news = operations_.news()) troubles_.sayOnce(news->text());
        lookAtHold(preferences, now);
        remind(preferences, now);
        tellWhatWasMissed(preferences, now);
        hasBegun_ = true;
        deliverAll();
    });
    if (!done) passBy(operations_.now() + timeToNextTry);
    return done;
}

void Watcher::ingest(const Preferences& preferences, Instant now) {
    const Ingest ingest{preferences.notifications, operations_.calendar(), usableChannels(),
                        preferences.host.completionAfter, operations_.hasWaitedSince};
    for (const auto& source : sources_) {
        auto report = ingest.run(source, database_, now);
        for (auto& trouble : report.troubles) troubles_.add(std::move(trouble));
        if (const auto skipped = report.skippedLines()) troubles_.sayOnce(skipped->text());
        if (isFirstAfterAbsence()) missed_.merge(report.missedSessions);
    }
    const auto oldest =
        now - std::chrono::duration_cast<Instant::duration>(preferences.notifications.maxEventAge);
    for (const auto& dropped : Outbox{database_}.dropOlderThan(oldest))
        if (isFirstAfterAbsence()) missed_.insert(dropped.content.sessionStorageID);
}

// By what is stored, so that a host which comes after the pause tells of it all the same.
void Watcher::lookAtHold(const Preferences& preferences, Instant now) {
    const auto hold = holdAt(now, preferences, operations_.calendar());
    const bool wasHeld = std::exchange(isHeld_, hold.has_value());
    if (hold) {
        passBy(hold->until);
        return;
    }
    auto heldBack = Outbox{database_}.heldBack();
    hasHeldBack_ = !heldBack.empty();
    isBackFromHold_ = wasHeld || hasHeldBack_;
    missed_.merge(heldBack);
}

void Watcher::followAgents(const Preferences& preferences, Instant now) {
    const PresenceTelling telling{preferences.notifications, operations_.calendar(),
                                  usableChannels()};
    const auto outlook = operations_.followAgents(
        now, [&](const SessionSnapshot& session, const AgentPresence& presence) {
            telling.tell(session, presence, database_, now);
        });
    passBy(outlook.next);
}

// What was told of a session that waits no more, by what it was found to be at or by an event.
void Watcher::takeBack(Instant now) {
    std::set<std::string> waiting;
    const auto since = now - std::chrono::duration_cast<Instant::duration>(listedFor);
    for (const auto& session : sessionsShownWaiting(database_, since)) waiting.insert(session.id());
    for (const auto& session : std::exchange(waiting_, waiting)) {
        if (waiting.contains(session)) continue;
        for (const auto& channel : channels_)
            if (channel.state().withdraws) channel.withdraw(session);
    }
}

void Watcher::remind(const Preferences& preferences, Instant now) {
    const Reminders reminders{preferences.host.reminderInterval, preferences.notifications,
                              operations_.calendar()};
    const auto outlook = reminders.look(database_, now);
    passBy(outlook.next);
    if (outlook.due.empty()) return;

    // Several at once can only have piled up: one line tells of all, and each counts as sent.
    std::set<std::string> sessions = missed_;
    for (const auto& reminder : outlook.due) sessions.insert(reminder.session.storageID());
    const bool piledUp = (isFirstAfterAbsence() || isBackFromHold_) && sessions.size() > 1;
    if (piledUp) missed_ = sessions;
    Outbox outbox{database_};
    auto transaction = database_.beginWriting();
    for (const auto& reminder : outlook.due) {
        if (piledUp) {
            outbox.setReminderCount(reminder.session, reminder.count);
        } else {
            Reminders::tell(reminder, outbox, now, usableChannels());
            // Its reminder says more of one session than a count.
            missed_.erase(reminder.session.storageID());
        }
    }
    transaction.commit();
}

void Watcher::tellWhatWasMissed(const Preferences& preferences, Instant now) {
    if (isHeld_) return;
    const auto missed = std::exchange(missed_, {});
    const auto content =
        awayNotification(missed, preferences.notifications, database_, now, operations_.calendar());
    if (!content && !hasHeldBack_) return;
    Outbox outbox{database_};
    auto transaction = database_.beginWriting();
    if (content) outbox.add(*content, now, now, usableChannels());
    if (hasHeldBack_) outbox.letGoOfHeldBack();
    transaction.commit();
}

void Watcher::deliverAll() {
    Outbox outbox{database_};
    for (const auto& channel : channels_) {
        const auto outlook = deliver(channel, outbox, operations_.now);
        if (outlook.failed) troubles_.add(notTold);
        passBy(outlook.next);
    }
}

std::vector<std::string> Watcher::usableChannels() const {
    std::vector<std::string> names;
    for (const auto& channel : channels_)
        if (channel.state().isUsable) names.push_back(channel.name);
    return names;
}

void Watcher::passBy(std::optional<Instant> time) {
    if (time && (!nextDue_ || *time < *nextDue_)) nextDue_ = time;
}

}  // namespace tallowbrook::host
