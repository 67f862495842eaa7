// Tells by `terminal-notifier`, which shows a notification of macOS and ends. The notification
// stays, and a click on it runs a command, whether the host still runs or not.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "Channels/Channel.h"
#include "Channels/ProgramTeller.h"

namespace tallowbrook::host {

// The name under which the outbox keeps what this channel has to tell.
inline constexpr std::string_view terminalNotifierChannelName = "terminal-notifier";

// The command that brings a session to the front, as one text for /bin/sh, its program by an
// absolute path: who runs it has another PATH.
using FocusCommand = std::function<std::string(const std::string& sessionStorageID)>;

// Runs the first `terminal-notifier` of PATH, from version 3.0.0 on: before, a click does nothing.
Channel makeTerminalNotifierChannel(SayWhy say, FocusCommand focusCommand);

}  // namespace tallowbrook::host
