#include "Channels/NotificationJSON.h"

#include "Domain/EventCoding.h"
#include "Text/UTF8.h"

namespace tallowbrook::host {
namespace {

// Raised by what would mislead a reader of the former one; a member more is no such change.
constexpr int schema = 1;

}  // namespace

std::string notificationJSON(const Delivery& delivery, Instant at) {
    const auto& content = delivery.content;
    auto encoder = EventCoding::makeEncoder();
    encoder.encode("schema", schema);
    encoder.encode("id", delivery.number);
    encoder.encode("at", at);
    encoder.encode("kind", content.kind);
    encoder.encode("title", UTF8::replacingInvalid(content.title));
    encoder.encode("body", UTF8::replacingInvalid(content.body));
    encoder.encode("sound", content.playSound);
    if (!content.sessionStorageID.empty())
        encoder.encode("session", UTF8::replacingInvalid(content.sessionStorageID));
    return encoder.text() + "\n";
}

}  // namespace tallowbrook::host
