#include "Watch/Deliveries.h"

#include <chrono>

namespace tallowbrook::host {
namespace {

constexpr std::chrono::seconds timeToNextAttempt{2};

struct Settled {
    bool any = false;
    std::optional<Instant> next;  // of an attempt that failed
};

Settled settle(const Channel& channel, Outbox& outbox, Instant now) {
    Settled settled;
    for (const auto& event : channel.takeEvents()) {
        settled.any = true;
        switch (event.kind) {
            case ChannelEvent::Kind::handedOver:
                outbox.markTold(event.delivery, channel.name, now);
                break;
            case ChannelEvent::Kind::failed:
                settled.next = now + timeToNextAttempt;
                outbox.postpone(event.delivery, channel.name, *settled.next);
                break;
            case ChannelEvent::Kind::refused:
                outbox.markRefused(event.delivery, channel.name);
                break;
            case ChannelEvent::Kind::clicked:
            case ChannelEvent::Kind::closed:
                break;
        }
    }
    return settled;
}

// What is due later than any attempt was put off to was put off by a clock that was set back since.
bool isStillToCome(Instant due, Instant now) { return due > now && due <= now + timeToNextAttempt; }

}  // namespace

DeliveryOutlook deliver(const Channel& channel, Outbox& outbox,
                        const std::function<Instant()>& now) {
    if (const auto late = settle(channel, outbox, now()); late.next) return {true, late.next};
    for (const auto& delivery : outbox.pending(channel.name)) {
        if (delivery.attempts > 0 && isStillToCome(delivery.dueAt, now()))
            return {false, delivery.dueAt};
        const auto number = delivery.notification.number;
        const bool recordsFirst = channel.state().toldTwiceHarms;
        if (recordsFirst) outbox.markBegun(number, channel.name);
        channel.begin({number, delivery.notification.content});
        const auto settled = settle(channel, outbox, now());
        if (settled.next) return {true, settled.next};
        // Its answer will come later; until then it must not be begun again.
        if (!settled.any && !recordsFirst) outbox.markBegun(number, channel.name);
    }
    return {};
}

}  // namespace tallowbrook::host
