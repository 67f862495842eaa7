#include "Commands/SessionChoice.h"

#include <chrono>

#include "Preferences/HostSettings.h"
#include "Store/SessionMarks.h"
#include "Store/SessionStore.h"
#include "Watch/Presence.h"

namespace tallowbrook::host {

SessionList recentSessions(Database& database, Instant now) {
    const auto since = now - std::chrono::duration_cast<Instant::duration>(listedFor);
    SessionStore store{database};
    auto list = SessionList::make(store.sessionsSeenSince(since), ListScope::recent, now,
                                  SessionMarks{database}.seenSince(since),
                                  Presence{}.asOfNow(database, since, now));
    list.olderCount = static_cast<std::size_t>(store.countOfSessionsSeenBefore(since));
    return list;
}

SessionList listedSessions(Database& database, ListScope scope, Instant now) {
    if (scope == ListScope::recent) return recentSessions(database, now);
    const auto since = now - std::chrono::duration_cast<Instant::duration>(listedFor);
    return SessionList::make(SessionStore{database}.sessions(), scope, now,
                             SessionMarks{database}.seenSince(since),
                             Presence{}.asOfNow(database, distantPast, now));
}

std::expected<ListedSession, Sentence> chooseSession(Database& database, std::string_view word,
                                                     Instant now) {
    // What the list shows comes first: a number or the beginning of an id means that one.
    if (auto recent = recentSessions(database, now).find(word)) return recent;
    return listedSessions(database, ListScope::all, now).find(word);
}

void addSessionOperand(CommandWords& words, std::string& session) {
    words.addOperand("SESSION", session, "Its number in the list, or the beginning of its id");
}

}  // namespace tallowbrook::host
