#include "Watch/Withdrawals.h"

#include "Store/PresenceStore.h"
#include "Store/SessionStore.h"

namespace tallowbrook::host {
namespace {

bool asksForTheUser(const NotificationContent& content) {
    // What tells of several sessions at once is over with none of them.
    return !content.sessionStorageID.empty() && (content.kind == NotificationKind::attention ||
                                                 content.kind == NotificationKind::reminder);
}

std::set<std::string> thoseThatWait(const std::set<std::string>& sessions, Database& database) {
    std::set<std::string> waiting;
    for (const auto& session : SessionStore{database}.sessions(sessions)) {
        const auto presence = PresenceStore{database}.presence(session.key);
        if (shownAs(session, presence).status == SessionStatus::needsAttention)
            waiting.insert(session.id());
    }
    return waiting;
}

}  // namespace

bool Withdrawals::isOver(const NotificationContent& content, Database& database) {
    return asksForTheUser(content) && thoseThatWait({content.sessionStorageID}, database).empty();
}

void Withdrawals::note(const Channel& channel, const NotificationContent& content) {
    const auto state = channel.state();
    auto& sessions = told_[channel.name];
    if (asksForTheUser(content)) {
        if (state.withdraws) sessions.insert(content.sessionStorageID);
    } else if (state.replaces) {
        // In the place of the one that asked; this one is the user's to put away.
        sessions.erase(content.sessionStorageID);
    }
}

void Withdrawals::look(const std::vector<Channel>& channels, Database& database) {
    for (const auto& channel : channels) {
        const auto found = told_.find(channel.name);
        if (found == told_.end() || found->second.empty()) continue;
        const auto waiting = thoseThatWait(found->second, database);
        std::erase_if(found->second, [&](const std::string& session) {
            if (waiting.contains(session)) return false;
            channel.withdraw(session);
            return true;
        });
    }
}

}  // namespace tallowbrook::host
