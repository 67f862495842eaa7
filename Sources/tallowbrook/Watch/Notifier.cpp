#include "Watch/Notifier.h"

#include <fmt/core.h>
#include <unistd.h>

#include "Output/TerminalOutput.h"
#include "Output/TerminalText.h"

namespace tallowbrook::host {

Notifier Notifier::printing() {
    return {[](const NotificationContent& content) {
        const bool rings = content.playSound && isatty(STDOUT_FILENO) == 1;
        const auto shown = TerminalOutput::show(
            fmt::format("{}  {}: {}{}\n", TerminalText::timeOfDay(currentInstant()),
                        TerminalText::printable(content.title),
                        TerminalText::printable(content.body), rings ? "\a" : ""));
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
