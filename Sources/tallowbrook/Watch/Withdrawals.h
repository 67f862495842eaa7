// Takes back what asked for the user of a session, once nobody waits any more.
//
// Only what this run has told: which of a service's notifications an earlier one has shown is not
// known. Used by one thread.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "Channels/Channel.h"
#include "Store/Database.h"

namespace tallowbrook::host {

class Withdrawals {
 public:
    // A notification that asks for the user, of a session that does not wait. Throws
    // SQLite::Exception when the database fails.
    static bool isOver(const NotificationContent& content, Database& database);

    // The channel tells this from here on.
    void note(const Channel& channel, const NotificationContent& content);

    // Withdraws what is over. Reads nothing where nothing was told. Throws SQLite::Exception when
    // the database fails.
    void look(const std::vector<Channel>& channels, Database& database);

 private:
    std::map<std::string, std::set<std::string>> told_;  // by channel: sessions, by storage id
};

}  // namespace tallowbrook::host
