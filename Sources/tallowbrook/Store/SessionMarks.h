// What tells the sessions of one project apart, as it lies in the database.
//
// A view of a `Database`, which must outlive it; made where it is needed. Throws SQLite::Exception
// when the database fails.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Domain/Instant.h"
#include "Output/SessionName.h"
#include "Store/Database.h"

namespace tallowbrook::host {

class SessionMarks {
 public:
    explicit SessionMarks(Database& database) : database_{database} {}

    // Absent for a session to which none was given yet.
    std::optional<SessionMark> mark(const std::string& session);
    // In the place of an older one of that session.
    void setMark(const SessionMark& mark);

    // Of the sessions heard of since `time`, in the order in which they came.
    std::vector<SessionMark> seenSince(Instant time);
    std::vector<SessionMark> seenSince(Instant time, const std::string& project);

 private:
    Database& database_;
};

}  // namespace tallowbrook::host
