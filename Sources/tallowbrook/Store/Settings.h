// What the host keeps by name: the user's preferences, and what it has to remember from run to run.
//
// A view of a `Database`, which must outlive it; made where it is needed. Throws SQLite::Exception
// when the database fails. What is stored and cannot be read counts as never stored.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "Domain/AgentEvent.h"
#include "Integrations/IntegrationHealth.h"
#include "Preferences/HostPreferences.h"
#include "Preferences/Mutes.h"
#include "SessionState/WaitingCycle.h"
#include "Store/Database.h"

namespace tallowbrook::host {

class Settings {
 public:
    explicit Settings(Database& database) : database_{database} {}

    // The defaults of what the user has never chosen.
    Preferences preferences();
    void setPreferences(const Preferences& preferences);

    // What the user has muted, also what has ended since.
    Mutes mutes();
    void setMutes(const Mutes& mutes);

    // Where stepping through the waiting sessions has come to.
    WaitingCycle waitingCycle();
    void setWaitingCycle(const WaitingCycle& cycle);

    // A line of the helper's log, and the byte behind its line feed. By its text the log is known
    // again after it was moved aside.
    struct LogPlace {
        std::size_t end = 0;
        std::string line;
        bool operator==(const LogPlace&) const = default;
    };
    // Up to where the user was told of lost events; absent until then.
    std::optional<LogPlace> toldOfHelperLog();
    void setToldOfHelperLog(const LogPlace& place);

    // Of the newest live event that a hook of the agent has sent; absent until then.
    std::optional<Instant> hookHeardAt(Provider provider);
    void setHookHeardAt(Provider provider, Instant time);

    // Empty until something is stored.
    IntegrationHealthRecord integrationHealth(Provider provider);
    void setIntegrationHealth(Provider provider, const IntegrationHealthRecord& record);

 private:
    std::optional<std::string> value(const std::string& key);
    void setValue(const std::string& key, const std::string& value);

    Database& database_;
};

}  // namespace tallowbrook::host
