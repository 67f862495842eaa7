// Shows what another host on the same home tells.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "Channels/Channel.h"
#include "Output/Sentence.h"
#include "Store/Database.h"
#include "Watch/Troubles.h"

namespace tallowbrook::host {

// Used by one thread.
class Onlooker {
 public:
    // What another host has said once since the last call.
    using News = std::function<std::optional<Sentence>()>;

    // Shows only what is told from here on. The references must outlive the onlooker. Throws
    // SQLite::Exception when the database fails, as `news` may.
    Onlooker(Database& database, const Channel& channel, Troubles& troubles, News news);

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
    News news_;
    std::int64_t shownUpTo_ = 0;  // a place of the outbox
    std::int64_t seenVersion_ = 0;
};

}  // namespace tallowbrook::host
