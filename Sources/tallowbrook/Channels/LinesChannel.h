// Tells by lines on standard output.
#pragma once

#include <string>
#include <string_view>

#include "Channels/Channel.h"

namespace tallowbrook::host {

// Every host has this channel, so what is decided while none runs is left for it.
inline constexpr std::string_view linesChannelName = "lines";

// One line for each notification with the time of day, and the terminal's bell where one listens.
// A line that cannot be written fails at once.
Channel makeLinesChannel();

// "08:29:04  Claude Code needs permission: proj — waiting for approval." with a line feed at its
// end.
std::string notificationLine(const NotificationContent& content, Instant now);

}  // namespace tallowbrook::host
