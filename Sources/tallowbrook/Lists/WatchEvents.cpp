#include "Lists/WatchEvents.h"

#include "Domain/EventCoding.h"
#include "Output/PrintableText.h"

namespace tallowbrook::host {
namespace {

// Grows when a member changes its meaning or goes; readers pass over members they do not know.
constexpr int schema = 1;

RecordEncoder eventEncoder(const char* event) {
    RecordEncoder encoder = EventCoding::makeEncoder();
    encoder.encode("schema", schema);
    encoder.encode("event", event);
    return encoder;
}

}  // namespace

std::string notificationEvent(const NotificationContent& content, Instant at) {
    auto encoder = eventEncoder("notification");
    encoder.encode("at", at);
    encoder.encode("kind", content.kind);
    encoder.encode("title", content.title);
    encoder.encode("body", content.body);
    encoder.encode("session", content.sessionStorageID);
    return PrintableText::printableJSON(encoder.text()) + "\n";
}

std::string SessionEvents::changes(const SessionList& list, Instant now) {
    std::string lines;
    std::map<std::string, ListedSession> listed;
    for (const auto& session : list.sessions) {
        const auto id = session.snapshot.id();
        const auto before = given_.find(id);
        if (before == given_.end() || before->second != session) {
            auto encoder = eventEncoder("session");
            encodeSession(encoder, session, now);
            lines += PrintableText::printableJSON(encoder.text()) + "\n";
        }
        listed.emplace(id, session);
    }
    // What a list leaves out is news when it comes back.
    given_ = std::move(listed);
    return lines;
}

}  // namespace tallowbrook::host
