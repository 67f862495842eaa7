// Gives each session what tells it apart from others of its project, when it begins.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "Domain/AgentEvent.h"
#include "SessionState/SessionSnapshot.h"
#include "Store/SessionMarks.h"

namespace tallowbrook::host {

// For one batch of events at `now`. Throws SQLite::Exception when the database fails.
class SessionMarking {
 public:
    SessionMarking(Database& database, Instant now) : marks_{database}, now_{now} {}

    // After an event of the session: a session that is new, or that was begun again in another
    // directory, gets the smallest number that no other listed one of its project has; at each
    // prompt the branch is looked at anew.
    void note(const SessionSnapshot& session, const AgentEvent& event);

    // What the session is called beside the others that a list shows.
    std::string nameOf(const SessionSnapshot& session);

 private:
    std::optional<std::string> branchOf(const std::string& directory);
    SessionNames& namesWith(const std::string& project);

    SessionMarks marks_;
    Instant now_;
    std::map<std::string, std::optional<std::string>> branches_;  // by directory
    SessionNames names_;
    std::set<std::string> projects_;  // whose listed sessions have been read
};

}  // namespace tallowbrook::host
