// Shows what another host on the same home tells.
#pragma once

#include <cstdint>

#include "Channels/Channel.h"
#include "Store/Database.h"
#include "Watch/Troubles.h"

namespace tallowbrook::host {

// Used by one thread.
class Onlooker {
 public:
    // Shows only what is told from here on. All three must outlive the onlooker. Throws
    // SQLite::Exception when the database fails.
    Onlooker(Database& database, const Channel& channel, Troubles& troubles);

    // After the database was opened anew: shows only what is told from here on.
    void beginAnew();

    // Shows what was told since the last pass. Reads nothing where no other process has written.
    // False when something could not be shown; it is kept for the next pass.
    bool pass();

 private:
    void show();

    Database& database_;
    const Channel& channel_;
    Troubles& troubles_;
    std::int64_t shownUpTo_ = 0;  // a place of the outbox
    std::int64_t seenVersion_ = 0;
};

}  // namespace tallowbrook::host
