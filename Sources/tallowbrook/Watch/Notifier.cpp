#include "Watch/Notifier.h"

#include <fmt/core.h>
#include <unistd.h>

#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Output/TimeText.h"

namespace tallowbrook::host {

Notifier Notifier::printing() {
    return {[](const NotificationContent& content) {
        const bool rings = content.playSound && isatty(STDOUT_FILENO) == 1;
        const auto shown = StandardStreams::show(
            fmt::format("{}  {}: {}{}\n", TimeText::timeOfDay(currentInstant()),
                        PrintableText::printable(content.title),
                        PrintableText::printable(content.body), rings ? "\a" : ""));
        return shown.has_value();
    }};
}

bool deliverPending(EventStore& store, const Notifier& notifier, Seconds maxEventAge, Instant now) {
    for (const auto& notification : store.pendingNotifications()) {
        if (now - notification.observedAt > maxEventAge) {
            store.markDropped(notification.number);
            continue;
        }
        if (!notifier.deliver(notification.content)) return false;
        store.markTold(notification.number, now);
    }
    return true;
}

}  // namespace tallowbrook::host
