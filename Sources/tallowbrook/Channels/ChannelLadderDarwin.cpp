#include <array>

#include "Channels/AlerterChannel.h"
#include "Channels/ChannelLadder.h"
#include "Channels/OsascriptChannel.h"
#include "Channels/TerminalChannel.h"

namespace tallowbrook::host {
namespace {

constexpr std::array ladder{
    ChannelRow{alerterChannelName,
               [](const ChannelTools& tools) { return makeAlerterChannel(tools.say); }},
    ChannelRow{terminalNotifierChannelName,
               [](const ChannelTools& tools) {
                   return makeTerminalNotifierChannel(tools.say, tools.focusCommand);
               }},
    ChannelRow{osascriptChannelName,
               [](const ChannelTools& tools) { return makeOsascriptChannel(tools.say); }},
    // Across ssh, where those before it would show on the wrong screen.
    ChannelRow{terminalChannelName,
               [](const ChannelTools& tools) {
                   return makeTerminalChannel(TerminalSeat::ofThisProcess(tools.mayAskTerminal));
               }},
};

}  // namespace

std::span<const ChannelRow> channelLadder() { return ladder; }

}  // namespace tallowbrook::host
