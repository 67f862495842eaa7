// Tells by lines on standard output.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

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

// A screen in the place of standard output, whose owner shows notifications among other things.
struct ScreenLines {
    // Takes a notification that is to be shown from here on.
    std::function<void(const NotificationContent&)> show;
    // Whether what is shown is to be recorded as told, and not only shown after another host.
    std::function<bool()> counts;

    // For the owner: the screen shows all that it was given.
    void isShown();

    // For the channel.
    std::vector<std::int64_t> underWay = {};
    std::vector<ChannelEvent> events = {};
    bool hasNews = false;
};

// The same channel on a screen: what it was given counts as told once the screen shows it.
Channel makeLinesChannel(const std::shared_ptr<ScreenLines>& screen);

// "08:29:04  Claude Code needs permission: proj — waiting for approval." with a line feed at its
// end.
std::string notificationLine(const NotificationContent& content, Instant now);

}  // namespace tallowbrook::host
