#include "Watch/Deliveries.h"

#include <chrono>

namespace tallowbrook::host {
namespace {

constexpr std::chrono::seconds timeToNextAttempt{2};

// Writes down what has come of deliveries; tells whether that of `awaited` was among them.
bool settleInto(DeliveryOutlook& outlook, const Channel& channel, Outbox& outbox, Instant now,
                std::int64_t awaited = 0) {
    bool hasCome = false;
    for (const auto& event : channel.takeEvents()) {
        switch (event.kind) {
            case ChannelEvent::Kind::handedOver:
                outbox.markTold(event.delivery, channel.name, now);
                break;
            case ChannelEvent::Kind::failed:
                outlook.failed = true;
                outlook.next = now + timeToNextAttempt;
                outbox.postpone(event.delivery, channel.name, *outlook.next);
                break;
            case ChannelEvent::Kind::refused:
                outbox.markRefused(event.delivery, channel.name);
                break;
            case ChannelEvent::Kind::clicked:
                outlook.clicked.push_back(event.delivery);
                continue;
            case ChannelEvent::Kind::closed:
                continue;
        }
        hasCome = hasCome || event.delivery == awaited;
    }
    return hasCome;
}

// What is due later than any attempt was put off to was put off by a clock that was set back since.
bool isStillToCome(Instant due, Instant now) { return due > now && due <= now + timeToNextAttempt; }

}  // namespace

DeliveryOutlook settle(const Channel& channel, Outbox& outbox, Instant now) {
    DeliveryOutlook outlook;
    settleInto(outlook, channel, outbox, now);
    return outlook;
}

DeliveryOutlook deliver(const Channel& channel, Outbox& outbox, const std::function<Instant()>& now,
                        const std::function<bool(const NotificationContent&)>& isOver) {
    auto outlook = settle(channel, outbox, now());
    if (outlook.failed) return outlook;
    for (const auto& delivery : outbox.pending(channel.name)) {
        if (delivery.attempts > 0 && isStillToCome(delivery.dueAt, now())) {
            outlook.next = delivery.dueAt;
            break;
        }
        const auto number = delivery.notification.number;
        const auto& content = delivery.notification.content;
        const auto state = channel.state();
        if (state.withdraws && isOver(content)) {
            outbox.markRefused(number, channel.name);
            continue;
        }
        if (state.toldTwiceHarms) outbox.markBegun(number, channel.name);
        channel.begin({number, content});
        outlook.begun.push_back(content);
        const bool hasCome = settleInto(outlook, channel, outbox, now(), number);
        if (outlook.failed) break;
        // Its answer will come later; until then it must not be begun again.
        if (!hasCome && !state.toldTwiceHarms) outbox.markBegun(number, channel.name);
    }
    return outlook;
}

}  // namespace tallowbrook::host
