#include "Store/SessionMarks.h"

namespace tallowbrook::host {
namespace {

SessionMark readMark(SQLite::Statement& query) {
    SessionMark mark{.session = query.getColumn(0).getString(),
                     .project = query.getColumn(1).getString(),
                     .directory = query.getColumn(2).getString(),
                     .number = query.getColumn(3).getInt(),
                     .branch = std::nullopt};
    if (!query.getColumn(4).isNull()) mark.branch = query.getColumn(4).getString();
    return mark;
}

std::vector<SessionMark> readMarks(const Database::StatementUse& query) {
    std::vector<SessionMark> marks;
    while (query->executeStep()) marks.push_back(readMark(*query));
    return marks;
}

}  // namespace

std::optional<SessionMark> SessionMarks::mark(const std::string& session) {
    const auto query = database_.prepared(
        "SELECT session, project, directory, number, branch FROM session_marks WHERE session = ?");
    query->bind(1, session);
    if (!query->executeStep()) return std::nullopt;
    return readMark(*query);
}

void SessionMarks::setMark(const SessionMark& mark) {
    const auto insert = database_.prepared(
        "INSERT OR REPLACE INTO session_marks (session, project, directory, number, branch)"
        " VALUES (?, ?, ?, ?, ?)");
    insert->bind(1, mark.session);
    insert->bind(2, mark.project);
    insert->bind(3, mark.directory);
    insert->bind(4, mark.number);
    if (mark.branch) insert->bind(5, *mark.branch);
    insert->exec();
}

std::vector<SessionMark> SessionMarks::seenSince(Instant time) {
    const auto query = database_.prepared(
        "SELECT m.session, m.project, m.directory, m.number, m.branch FROM sessions s"
        " JOIN session_marks m ON m.session = s.storage_id WHERE s.last_seen_at >= ?"
        " ORDER BY +s.number");
    query->bind(1, storedForm(time));
    return readMarks(query);
}

std::vector<SessionMark> SessionMarks::seenSince(Instant time, const std::string& project) {
    // By the project, which few sessions share, and not by the time.
    const auto query = database_.prepared(
        "SELECT m.session, m.project, m.directory, m.number, m.branch FROM session_marks m"
        " CROSS JOIN sessions s ON s.storage_id = m.session"
        " WHERE m.project = ? AND +s.last_seen_at >= ? ORDER BY +s.number");
    query->bind(1, project);
    query->bind(2, storedForm(time));
    return readMarks(query);
}

}  // namespace tallowbrook::host
