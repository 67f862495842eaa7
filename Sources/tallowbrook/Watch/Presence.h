// Whether the agents behind the sessions are there, and what they are at: what they note about
// themselves and what the process table says, judged against what their events said last.
//
// The events' records and the stored sessions are left as they are; `shownAs` puts the two
// together.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "SessionState/AgentPresence.h"
#include "Store/Database.h"
#include "Store/PresenceStore.h"
#include "Watch/AgentNotes.h"

namespace tallowbrook::host {

struct Judgement {
    AgentPresence presence;
    // When to look again though nothing happens: an event and what the agent notes with it do not
    // come at the same moment.
    std::optional<Instant> next;
    bool operator==(const Judgement&) const = default;
};

// What the notes mean for a session that works, waits or has ended without the end of its turn.
// `known` is what was known before. Pure but for the process table.
Judgement judge(const SessionSnapshot& session, const std::optional<SessionNotes>& notes,
                const std::optional<AgentPresence>& known, Instant now);

struct PresenceOutlook {
    std::optional<Instant> next;
    // What to watch until then.
    std::vector<NotePlace> places;
    std::vector<ProcessIdentity> processes;
};

// Takes a session as it is stored, and what is known of its agent from now on.
using PresenceNews = std::function<void(const SessionSnapshot&, const AgentPresence&)>;

// Used by one thread.
class Presence {
 public:
    explicit Presence(std::vector<AgentNotes> agents = AgentNotes::live())
        : agents_{std::move(agents)} {}

    // Looks at the agents of the sessions that work or wait, and stores what has changed, in one
    // transaction with what `news` does. For the host that leads. Throws SQLite::Exception when the
    // database fails.
    PresenceOutlook follow(Database& database, Instant now, const PresenceNews& news) const;

    // What is known of the sessions heard of since then, with a fresh look at those that work or
    // wait; stores nothing. Throws SQLite::Exception when the database fails.
    AgentPresences asOfNow(Database& database, Instant seenSince, Instant now) const;

    // Whether the agent of this session has waited for the user from before `since` until now.
    bool hasWaitedSince(const SessionKey& key, Instant since) const;

 private:
    struct Look {
        SessionSnapshot session;
        std::optional<AgentPresence> known;
        Judgement judgement;
    };
    std::vector<Look> look(Database& database, Instant now) const;
    static void store(Database& database, const std::vector<const Look*>& changed,
                      const PresenceNews& news);

    std::vector<AgentNotes> agents_;
};

// Whether the session waits for the user.
bool waits(const SessionSnapshot& session);

// The sessions that wait for the user and were heard of since then, as they are to be shown. Throws
// SQLite::Exception when the database fails.
std::vector<SessionSnapshot> sessionsShownWaiting(Database& database, Instant seenSince);

}  // namespace tallowbrook::host
