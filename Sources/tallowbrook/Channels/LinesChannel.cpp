#include "Channels/LinesChannel.h"

#include <fmt/core.h>
#include <unistd.h>

#include <memory>
#include <utility>

#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Output/TimeText.h"

namespace tallowbrook::host {

Channel makeLinesChannel() {
    const auto events = std::make_shared<std::vector<ChannelEvent>>();
    return {
        .name = std::string{linesChannelName},
        .state = [] { return ChannelState{.reason = "printed where tallowbrook watch runs"}; },
        .begin =
            [events](const Delivery& delivery) {
                const bool rings = delivery.content.playSound && isatty(STDOUT_FILENO) == 1;
                const auto line = notificationLine(delivery.content, currentInstant());
                const auto shown = StandardStreams::show(line + (rings ? "\a" : ""));
                events->push_back(
                    {shown ? ChannelEvent::Kind::handedOver : ChannelEvent::Kind::failed,
                     delivery.number});
            },
        .withdraw = [](const std::string&) {},
        .takeEvents = [events] { return std::exchange(*events, {}); },
        .source = std::nullopt,
    };
}

std::string notificationLine(const NotificationContent& content, Instant now) {
    return fmt::format("{}  {}: {}\n", TimeText::timeOfDay(now),
                       PrintableText::printable(content.title),
                       PrintableText::printable(content.body));
}

}  // namespace tallowbrook::host
