// Tells by `alerter`, which runs for as long as its notification stands on the screen of a Mac:
// what the user did with it comes back on its output, and its end takes the notification back.
#pragma once

#include <string_view>

#include "Channels/Channel.h"
#include "Channels/ProgramTeller.h"

namespace tallowbrook::host {

// The name under which the outbox keeps what this channel has to tell.
inline constexpr std::string_view alerterChannelName = "alerter";

// Runs the first `alerter` of PATH, once for each session at a time: a later notification of the
// session ends the earlier. Those that stand when the channel goes are taken back, since their
// clicks would be heard by nobody.
Channel makeAlerterChannel(SayWhy say);

}  // namespace tallowbrook::host
