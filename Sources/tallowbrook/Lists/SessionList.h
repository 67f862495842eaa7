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
#include "Output/SessionName.h"
#include "SessionState/AgentPresence.h"
#include "SessionState/SessionSnapshot.h"

namespace tallowbrook::host {

struct ListedSession {
    SessionSnapshot snapshot;
    SessionStatus status = SessionStatus::unknown;  // as displayed, so `stale` too
    std::string name;  // its project's, and what tells it from others of that
    // What is known of its agent, where that says more than the snapshot, which is as stored.
    std::optional<AgentPresence> presence = std::nullopt;

    // Why it has the status: `SessionSnapshot::explanation`, or what was found out beside events.
    std::string explanation(Instant now) const;
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

    // Leaves out the setup's own sessions, always. Those without a mark are told apart in the order
    // in which they began; those that a `recent` list leaves out bear their project's name.
    static SessionList make(std::vector<SessionSnapshot> snapshots, ListScope scope, Instant now,
                            const std::vector<SessionMark>& marks = {},
                            const AgentPresences& presences = {});

    // The session that the user means by a number of the table, or by the beginning of an id that
    // no other session here shares; programs name one by its storage id.
    [[nodiscard]] std::expected<ListedSession, Sentence> find(std::string_view word) const;

    // How much of each id, at least 8 characters, tells it from all others here.
    std::size_t shortIDLength() const;

    // A table for a terminal, a line each, with a line feed at its end.
    std::string table(Instant now) const;

    // A JSON array (RFC 8259), one object a session: "id", "status" (as displayed), "project",
    // "name", "explanation", "snapshot" with the stored record, and "agent" with what is known of
    // its agent beside events, where that decides: "state", "since" and "evidence".
    std::string json(Instant now) const;
};

}  // namespace tallowbrook::host
