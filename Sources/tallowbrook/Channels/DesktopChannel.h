// Tells by the desktop's notification service. One implementation per way to reach one; a build
// that has none of them gets a channel that is never usable.
#pragma once

#include <string_view>

#include "Channels/Channel.h"

namespace tallowbrook::host {

inline constexpr std::string_view desktopChannelName = "desktop";

// On Linux: the Desktop Notifications Specification 1.2 over the session bus. Shows one
// notification a session, which later ones replace; a click on it is an event. Whatever the service
// or the bus does, no operation waits for it: a delivery that is not answered in time fails, and
// the channel is not usable until the service answers. What it shows is taken back when the channel
// goes, since nobody would hear a click then.
Channel makeDesktopChannel();

}  // namespace tallowbrook::host
