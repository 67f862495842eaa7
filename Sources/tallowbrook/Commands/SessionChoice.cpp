#include "Commands/SessionChoice.h"

namespace tallowbrook::host {

std::expected<ListedSession, Sentence> chooseSession(EventStore& store, std::string_view word,
                                                     Instant now) {
    const auto sessions = store.sessions();
    if (auto recent = SessionList::make(sessions, ListScope::recent, now).find(word)) return recent;
    return SessionList::make(sessions, ListScope::all, now).find(word);
}

}  // namespace tallowbrook::host
