// One host on a home: it leads, which is to drain and to tell, or looks on at another that does
// until that one ends.
#pragma once

#include <expected>
#include <functional>
#include <optional>
#include <vector>

#include "EventBridge/SpoolSignal.h"
#include "Loop/PollLoop.h"
#include "Watch/EvidenceAlarm.h"
#include "Watch/Gaze.h"
#include "Watch/HostLock.h"
#include "Watch/Onlooker.h"
#include "Watch/RefusedEvents.h"
#include "Watch/SpoolState.h"
#include "Watch/StateFile.h"
#include "Watch/Watcher.h"

namespace tallowbrook::host {

// Used by one thread.
class Host {
 public:
    // The database must outlive the host. The first channel shows what another host tells.
    // `clicked` is told of the user's clicks as a watcher's is; `asksForSpool` as in
    // `EventSource::spool`. Throws SQLite::Exception when the database fails.
    Host(
        TallowbrookPaths paths, Database& database, std::vector<Channel> channels,
        Troubles::Say say,
        std::function<void(const std::string& sessionStorageID)> clicked = [](const auto&) {},
        int asksForSpool = EventSource::asksAgainLater);
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host();

    // Leads from here on if no other host does. Fails when the lock cannot be taken at all.
    [[nodiscard]] std::expected<void, FileError> tryToLead();
    bool leads() const { return lock_.has_value(); }

    // False when something could not be done; the troubles have said what. Where the database, or
    // the whole home, was removed or replaced meanwhile, says so and goes on with a new one.
    bool pass();

    // Makes a pass whenever there is reason for one: the spool's signal, what is due, what the
    // agents of sessions that work or wait note about themselves, their end, and a look at the
    // spool every 2 s for signals that do not arrive. The loop must outlive the host. What is to be
    // done after each pass and each look is `afterwards`.
    void attachTo(PollLoop& loop, std::function<void()> afterwards = [] {});

    // Whether something that could not be done in the last pass stands to be done.
    bool hasTroubles() const { return troubles_.stand(); }

 private:
    bool keepHome();
    bool lead();
    PollInterest clockInterest() const;
    void lookAround();

    TallowbrookPaths paths_;
    Database& database_;
    std::vector<Channel> channels_;
    Troubles troubles_;
    RefusedEvents refused_;
    Presence agents_;
    PresenceOutlook agentsOutlook_;
    EvidenceAlarm alarm_;
    Gaze gaze_;
    Watcher watcher_;
    Onlooker onlooker_;
    StateFile state_;
    std::optional<HostLock> lock_;

    bool isAttached_ = false;  // to a loop, without which no answer comes
    SpoolState seenSpool_;
    MonotonicTime nextLook_{};
    Instant seenClock_{};  // the time of day at the last look
    std::optional<SpoolSignal::Observer> signal_;
    std::function<void()> afterwards_;
    std::vector<PollLoop::Attachment> attachments_;
};

}  // namespace tallowbrook::host
