#include "Notifier.h"

#include <fmt/core.h>
#include <unistd.h>

#include <cstdio>

#include "TerminalText.h"

namespace tallowbrook::host {

Notifier Notifier::printing() {
    return {[](const NotificationContent& content) {
        const bool rings = content.playSound && isatty(STDOUT_FILENO) == 1;
        const std::string line =
            fmt::format("{}  {}: {}{}\n", TerminalText::timeOfDay(currentInstant()),
                        TerminalText::printable(content.title),
                        TerminalText::printable(content.body), rings ? "\a" : "");
        return std::fputs(line.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    }};
}

void deliverPending(EventStore& store, const Notifier& notifier, Seconds maxEventAge, Instant now) {
    for (const auto& notification : store.pendingNotifications()) {
        if (now - notification.observedAt > maxEventAge) {
            store.markDropped(notification.number);
            continue;
        }
        if (!notifier.deliver(notification.content)) return;
        store.markTold(notification.number, now);
    }
}

}  // namespace tallowbrook::host
