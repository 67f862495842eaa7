// One host on a home: it leads, which is to drain and to tell, or looks on at another that does
// until that one ends.
#pragma once

#include <expected>
#include <optional>
#include <vector>

#include "EventBridge/SpoolSignal.h"
#include "Loop/PollLoop.h"
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
    // The database must outlive the host. The first channel shows what another host tells. Throws
    // SQLite::Exception when the database fails.
    Host(TallowbrookPaths paths, Database& database, std::vector<Channel> channels,
         Troubles::Say say);
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host();

    // Leads from here on if no other host does. Fails when the lock cannot be taken at all.
    [[nodiscard]] std::expected<void, FileError> tryToLead();
    bool leads() const { return lock_.has_value(); }

    // False when something could not be done; the troubles have said what. Where the database, or
    // the whole home, was removed or replaced meanwhile, says so and goes on with a new one.
    bool pass();

    // Makes a pass whenever there is reason for one: the spool's signal, what is due, and a look at
    // the spool every 2 s for signals that do not arrive. The loop must outlive the host.
    void attachTo(PollLoop& loop);

 private:
    bool keepHome();
    PollInterest clockInterest() const;
    void lookAround();

    TallowbrookPaths paths_;
    Database& database_;
    std::vector<Channel> channels_;
    Troubles troubles_;
    RefusedEvents refused_;
    Watcher watcher_;
    Onlooker onlooker_;
    StateFile state_;
    std::optional<HostLock> lock_;

    SpoolState seenSpool_;
    MonotonicTime nextLook_{};
    Instant seenClock_{};  // the time of day at the last look
    std::optional<SpoolSignal::Observer> signal_;
    std::vector<PollLoop::Attachment> attachments_;
};

}  // namespace tallowbrook::host
