// Moves events from their sources into the store, and tells the user what follows from them.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Channels/Channel.h"
#include "Notifications/Calendar.h"
#include "Preferences/HostPreferences.h"
#include "Store/Database.h"
#include "Watch/EventSource.h"
#include "Watch/Presence.h"
#include "Watch/Troubles.h"
#include "Watch/Withdrawals.h"
#include "Watch/Withholding.h"

namespace tallowbrook::host {

// What a watcher asks of the machine.
struct WatcherOperations {
    std::function<Instant()> now = currentInstant;
    std::function<Calendar()> calendar = Calendar::current;
    // What is to be said once beside the events; asked in each pass. May throw SQLite::Exception.
    std::function<std::optional<Sentence>()> news = [] { return std::nullopt; };
    // `Presence::hasWaitedSince`, and the looking of `Presence::follow`; without them the events
    // alone say what a session is at. The second may throw SQLite::Exception.
    std::function<bool(const SessionKey&, Instant)> hasWaitedSince = [](const auto&, auto) {
        return false;
    };
    std::function<PresenceOutlook(Instant now, const PresenceNews& news)> followAgents =
        [](Instant, const PresenceNews&) { return PresenceOutlook{}; };
    // The user has clicked on what was told of a session, which is given by its storage id; empty
    // where it was told of several.
    std::function<void(const std::string& sessionStorageID)> clicked = [](const auto&) {};
    // What the user looks at is not told.
    Looking looking = {};
};

// Used by one thread; of several processes on one home the holder of the host's lock alone.
class Watcher {
 public:
    // The database, the channels and the troubles must outlive the watcher.
    Watcher(Database& database, std::vector<EventSource> sources,
            const std::vector<Channel>& channels, Troubles& troubles,
            WatcherOperations operations = {});

    // What piled up until now was seen by another host, whose place this one takes: it is not told
    // as missed. Called before the first pass, if at all.
    void takeOver() { missesNothing_ = true; }

    // Stores what the sources hold, finds the reminders that are due, and delivers. False when
    // something could not be done: the troubles say what. A pass that fails loses nothing, since
    // what it did not commit is still where it came from.
    bool pass();

    // When the next pass is due though nothing happens; absent when none is.
    std::optional<Instant> nextDue() const { return nextDue_; }

 private:
    void ingest(const Preferences& preferences, Instant now);
    void followAgents(const Preferences& preferences, Instant now);
    void lookAtHold(const Preferences& preferences, Instant now);
    void remind(const Preferences& preferences, Instant now);
    void tellWhatWasMissed(const Preferences& preferences, Instant now);
    bool isFirstAfterAbsence() const { return !hasBegun_ && !missesNothing_; }
    void deliverAll(const Preferences& preferences, Instant now);
    void passBy(std::optional<Instant> time);

    Database& database_;
    std::vector<EventSource> sources_;
    const std::vector<Channel>& channels_;
    Troubles& troubles_;
    WatcherOperations operations_;
    Withholding withholding_;

    bool hasBegun_ = false;  // the first pass is done
    bool missesNothing_ = false;
    // Sessions, by storage id, to be told of in one line as soon as nothing holds that back.
    std::set<std::string> missed_;
    bool isHeld_ = false;       // by a pause or quiet hours
    bool hasHeldBack_ = false;  // the outbox has noted what they held back
    bool isBackFromHold_ = false;
    std::optional<Instant> nextDue_;
    Withdrawals withdrawals_;
    std::vector<std::string> chosen_;  // channels, as of this pass
};

}  // namespace tallowbrook::host
