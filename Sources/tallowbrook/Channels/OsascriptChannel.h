// Tells by the notifications that macOS shows for scripts. A click on one brings no session to the
// front, and none is taken back: what a script leaves has no identifier.
#pragma once

#include <string_view>

#include "Channels/Channel.h"
#include "Channels/ProgramTeller.h"

namespace tallowbrook::host {

// The name under which the outbox keeps what this channel has to tell.
inline constexpr std::string_view osascriptChannelName = "osascript";

// Runs the first `osascript` of PATH.
Channel makeOsascriptChannel(SayWhy say);

}  // namespace tallowbrook::host
