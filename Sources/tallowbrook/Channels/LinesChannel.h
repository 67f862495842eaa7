// Tells by lines on standard output.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Channels/Channel.h"
#include "Channels/PatientOutput.h"

namespace tallowbrook::host {

// Every host has this channel, so what is decided while none runs is left for it.
inline constexpr std::string_view linesChannelName = "lines";

// One line for each notification with the time of day, and the terminal's bell where one listens.
// Waits until standard output takes the line; one that cannot be written fails at once.
Channel makeLinesChannel();

// What a notification is written as, with a line feed at its end.
using LineOf = std::function<std::string(const NotificationContent&)>;

// Waits for nothing: a line that standard output does not take now is told of later, by way of the
// channel's source, and a second one meanwhile fails. The output is the channel's and its maker's.
// Where `lineOf` is empty, the lines are those of the channel above.
Channel makeLinesChannel(const std::shared_ptr<PatientOutput>& output, LineOf lineOf = {});

// The same channel for a host whose screen shows the notifications: `show` takes each at once.
Channel makeLinesChannel(std::function<void(const NotificationContent&)> show);

// "08:29:04  Claude Code needs permission: proj — waiting for approval." with a line feed at its
// end.
std::string notificationLine(const NotificationContent& content, Instant now);

}  // namespace tallowbrook::host
