#include "Channels/DesktopChannel.h"

namespace tallowbrook::host {

Channel makeDesktopChannel() {
    return {
        .name = std::string{desktopChannelName},
        .isRung = true,
        .state =
            [] {
                return ChannelState{.isUsable = false,
                                    .reason = "this build cannot reach a notification service"};
            },
        .begin = [](const Delivery&) {},
        .withdraw = [](const std::string&) {},
        .takeEvents = [] { return std::vector<ChannelEvent>{}; },
    };
}

}  // namespace tallowbrook::host
