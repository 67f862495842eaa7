#include "Watch/Watcher.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>

#include "Channels/ChannelLadder.h"
#include "Channels/LinesChannel.h"
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

std::string notTold(const Channel& channel) {
    constexpr const char* keeping = "What is to be told is kept for the next try.";
    if (channel.name == linesChannelName)
        return Sentence{"Standard output cannot be written"}.followedBy(keeping).text();
    return Sentence{
        fmt::format("The channel \"{}\" failed: {}", channel.name, channel.state().reason)}
        .followedBy(keeping)
        .text();
}

}  // namespace

Watcher::Watcher(Database& database, std::vector<EventSource> sources,
                 const std::vector<Channel>& channels, Troubles& troubles,
                 WatcherOperations operations)
    : database_{database},
      sources_{std::move(sources)},
      channels_{channels},
      troubles_{troubles},
      operations_{std::move(operations)},
      withholding_{operations_.looking} {}

bool Watcher::pass() {
    nextDue_.reset();
    const bool done = troubles_.during([this] {
        // Read anew each time: another process may have changed them.
        const Instant now = operations_.now();
        const auto preferences = Settings{database_}.preferences().asOf(now);
        passBy(preferences.host.pausedUntil);
        prepareChannels(preferences.host.channels, channels_);
        chosen_ = chosenChannels(preferences.host.channels, channels_);
        if (!hasBegun_)
            for (const auto& channel : channels_)
                Outbox{database_}.recover(channel.name, !channel.state().toldTwiceHarms);
        ingest(preferences, now);
        followAgents(preferences, now);
        if (const auto news = operations_.news()) troubles_.sayOnce(news->text());
        lookAtHold(preferences, now);
        remind(preferences, now);
        tellWhatWasMissed(preferences, now);
        hasBegun_ = true;
        deliverAll(preferences, now);
    });
    if (!done) passBy(operations_.now() + timeToNextTry);
    return done;
}

void Watcher::ingest(const Preferences& preferences, Instant now) {
    const Ingest ingest{preferences.notifications, operations_.calendar(), chosen_,
                        preferences.host.completionAfter, operations_.hasWaitedSince};
    for (const auto& source : sources_) {
        auto report = ingest.run(source, database_, now);
        for (auto& trouble : report.troubles) troubles_.add(std::move(trouble));
        if (const auto skipped = report.skippedLines()) troubles_.sayOnce(skipped->text());
        if (isFirstAfterAbsence()) missed_.merge(report.missedSessions);
    }
    const auto oldest =
        now - std::chrono::duration_cast<Instant::duration>(preferences.notifications.maxEventAge);
    const auto dropped = Outbox{database_}.dropOlderThan(oldest);
    if (isFirstAfterAbsence()) {
        for (const auto& notification : dropped)
            missed_.insert(notification.content.sessionStorageID);
    } else if (!dropped.empty()) {
        troubles_.sayOnce(fmt::format("{} could be told by no channel until too old.",
                                      dropped.size() == 1
                                          ? "One notification"
                                          : fmt::format("{} notifications", dropped.size())));
    }
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
    const PresenceTelling telling{preferences.notifications, operations_.calendar(), chosen_};
    const auto outlook = operations_.followAgents(
        now, [&](const SessionSnapshot& session, const AgentPresence& presence) {
            telling.tell(session, presence, database_, now);
        });
    passBy(outlook.next);
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
            Reminders::tell(reminder, outbox, now, chosen_);
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
    if (content) outbox.add(*content, now, now, chosen_);
    if (hasHeldBack_) outbox.letGoOfHeldBack();
    transaction.commit();
}

void Watcher::deliverAll(const Preferences& preferences, Instant now) {
    const auto& choice = preferences.host.channels;
    Outbox outbox{database_};
    const bool mayTell = withholding_.run(database_, chosen_, Settings{database_}.mutes().asOf(now),
                                          preferences.host.tellWhileLooking, now);
    const auto isChosen = [this](const Channel& channel) {
        return std::ranges::find(chosen_, channel.name) != chosen_.end();
    };
    const auto isOver = [this](const NotificationContent& content) {
        return Withdrawals::isOver(content, database_);
    };
    for (const auto& channel : channels_) {
        const auto outlook = mayTell && isChosen(channel)
                                 ? deliver(channel, outbox, operations_.now, isOver)
                                 : settle(channel, outbox, operations_.now());
        for (const auto& content : outlook.begun) withdrawals_.note(channel, content);
        for (const auto notification : outlook.clicked)
            if (const auto session = outbox.sessionOf(notification)) operations_.clicked(*session);
        if (outlook.failed) troubles_.add(notTold(channel));
        passBy(outlook.next);
    }
    withdrawals_.look(channels_, database_);
    // Only now: a delivery may have shown that a channel is not usable.
    chosen_ = chosenChannels(choice, channels_);
    std::vector<std::string> standIns;
    for (const auto& channel : channels_)
        if (channel.isRung && isChosen(channel)) standIns.push_back(channel.name);
    if (standIns.empty()) return;
    for (const auto& channel : channels_)
        if (channel.isRung && !isChosen(channel) && outbox.handOn(channel.name, standIns))
            passBy(operations_.now());
}

void Watcher::passBy(std::optional<Instant> time) {
    if (time && (!nextDue_ || *time < *nextDue_)) nextDue_ = time;
}

}  // namespace tallowbrook::host
