#include <array>

#include "Channels/ChannelLadder.h"
#include "Channels/DesktopChannel.h"
#include "Channels/TerminalChannel.h"

namespace tallowbrook::host {
namespace {

constexpr std::array ladder{
    ChannelRow{desktopChannelName, [](const ChannelTools&) { return makeDesktopChannel(); }},
    ChannelRow{terminalChannelName,
               [](const ChannelTools& tools) {
                   return makeTerminalChannel(TerminalSeat::ofThisProcess(tools.mayAskTerminal));
               }},
};

}  // namespace

std::span<const ChannelRow> channelLadder() { return ladder; }

}  // namespace tallowbrook::host
