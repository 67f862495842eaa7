// A way to tell the user: what every channel offers, and nothing of how.
//
// A channel belongs to one thread. Beginning never waits: what becomes of a delivery comes back as
// an event that bears the delivery's number, so that an answer that comes late finds its row.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Loop/PollLoop.h"
#include "Notifications/NotificationPolicy.h"

namespace tallowbrook::host {

struct ChannelState {
    bool isUsable = true;
    std::string reason;      // why it is used, or why it cannot be
    bool replaces = false;   // a later notification of a session takes the place of the earlier
    bool withdraws = false;  // takes a notification back
    bool clicks = false;     // tells when the user clicked one
    bool toldTwiceHarms = false;  // a delivery that was cut off must not be begun again
    // An answer is still to come that may change all of this. It comes by way of the source, or the
    // channel gives it up, within seconds.
    bool isFindingOut = false;
};

struct Delivery {
    std::int64_t number = 0;  // of the notification
    NotificationContent content;
};

struct ChannelEvent {
    enum class Kind {
        handedOver,  // all that can be known: whether the user saw it stays open
        failed,      // and may be tried again
        refused,     // and will fail again
        clicked,
        closed,
    };
    Kind kind = Kind::handedOver;
    std::int64_t delivery = 0;
    bool operator==(const ChannelEvent&) const = default;
};

struct Channel {
    std::string name;  // under which the outbox keeps its deliveries, for ever
    // One of several that reach the same eyes: the first that is usable tells, and the others stand
    // in for it. A channel that is none tells whatever else does.
    bool isRung = false;
    std::function<ChannelState()> state;
    // Finds out whether it can be used, where that is not known or was long ago. Asked before each
    // pass, of the channels that the user has not ruled out; an answer comes by way of the source.
    std::function<void()> prepare = [] {};
    std::function<void(const Delivery& delivery)> begin;
    // Takes back what was told of a session; does nothing where the channel cannot.
    std::function<void(const std::string& sessionStorageID)> withdraw;
    // What has come of deliveries since the last call.
    std::function<std::vector<ChannelEvent>()> takeEvents;
    // What it waits for, where it does.
    std::optional<PollSource> source = {};
};

}  // namespace tallowbrook::host
