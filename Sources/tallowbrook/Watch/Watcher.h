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
#include "Watch/Troubles.h"
#include "Watch/Withdrawals.h"

namespace tallowbrook::host {

// What a watcher asks of the machine.
struct WatcherOperations {
    std::function<Instant()> now = currentInstant;
    std::function<Calendar()> calendar = Calendar::current;
    // What is to be said once beside the events; asked in each pass. May throw SQLite::Exception.
    std::function<std::optional<Sentence>()> news = [] { return std::nullopt; };
    // The user has clicked on what was told of a session, which is given by its storage id; empty
    // where it was told of several.
    std::function<void(const std::string& sessionStorageID)> clicked = [](const auto&) {};
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
    void remind(const Preferences& preferences, Instant now);
    void tellWhatWasMissed(const Preferences& preferences, Instant now);
    void deliverAll(const ChannelChoice& choice);
    void passBy(std::optional<Instant> time);

    Database& database_;
    std::vector<EventSource> sources_;
    const std::vector<Channel>& channels_;
    Troubles& troubles_;
    WatcherOperations operations_;

    bool hasBegun_ = false;  // the first pass is done
    bool missesNothing_ = false;
    std::set<std::string> missed_;  // sessions, by storage id; until the first pass is done
    std::optional<Instant> nextDue_;
    Withdrawals withdrawals_;
    std::vector<std::string> chosen_;  // channels, as of this pass
};

}  // namespace tallowbrook::host
