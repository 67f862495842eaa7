// Lets a channel go on, as the host's loop does.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "Channels/Channel.h"

namespace tallowbrook::host {

// Until this is so; a minute at most.
inline void loopUntil(const Channel& channel, const std::function<bool()>& isSo) {
    PollLoop loop;
    const auto until = std::chrono::steady_clock::now() + std::chrono::minutes{1};
    const auto attached = loop.attach(*channel.source);
    // Wakes the loop for what another process does.
    const auto looking = loop.attach(
        {.interest =
             [] {
                 return PollInterest{
                     -1, 0, std::chrono::steady_clock::now() + std::chrono::milliseconds{10}};
             },
         .proceed = [](short) {}});
    while (!isSo()) {
        if (std::chrono::steady_clock::now() > until) {
            ADD_FAILURE() << "what the test waits for does not come";
            return;
        }
        loop.runOnce();
    }
}

// The channel's next events, this many at least.
inline std::vector<ChannelEvent> eventsOf(const Channel& channel, std::size_t count) {
    std::vector<ChannelEvent> events;
    loopUntil(channel, [&] {
        for (const auto& event : channel.takeEvents()) events.push_back(event);
        return events.size() >= count;
    });
    return events;
}

}  // namespace tallowbrook::host
