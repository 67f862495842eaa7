// The list of sessions as the user sees it.
//
// Plain values and pure functions; safe from any thread, while none changes the environment, which
// holds the time zone.
#pragma once

#include <cstddef>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Domain/RecordCoding.h"
#include "Output/Sentence.h"
#include "SessionState/SessionSnapshot.h"

namespace tallowbrook::host {

struct ListedSession {
    SessionSnapshot snapshot;
    SessionStatus status = SessionStatus::unknown;  // as displayed, so `stale` too
    bool operator==(const ListedSession&) const = default;
};

// In words: "needs permission", "has a question", "ended".
std::string statusText(const ListedSession& session);

// When the displayed status changes though nothing is heard of the session; absent where it never
// does.
std::optional<Instant> nextStatusChange(const ListedSession& session);

// The members that `SessionList::json` has of each session.
void encodeSession(RecordEncoder& encoder, const ListedSession& session, Instant now);

enum class ListScope { recent, all };

struct SessionList {
    // What waits for the user first, then the latest heard of. The sessions that a `recent` list
    // leaves out stand behind all others, so that a session has the same number in both lists.
    std::vector<ListedSession> sessions;
    std::size_t olderCount = 0;  // left out of a `recent` list

    // Leaves out the setup's own sessions, always.
    static SessionList make(std::vector<SessionSnapshot> snapshots, ListScope scope, Instant now);

    // The session that the user means by a number of the table, or by the beginning of an id that
    // no other session here shares.
    [[nodiscard]] std::expected<ListedSession, Sentence> find(std::string_view word) const;

    // How much of each id, at least 8 characters, tells it from all others here.
    std::size_t shortIDLength() const;

    // A table for a terminal, a line each, with a line feed at its end.
    std::string table(Instant now) const;

    // A JSON array (RFC 8259), one object a session: "id", "status" (as displayed), "project",
    // "explanation", and "snapshot" with the stored record.
    std::string json(Instant now) const;
};

}  // namespace tallowbrook::host
